#include "service/AdminPage.h"

#include <string_view>

#include "service/HtmlPage.h"
#include "service/Text.h"

namespace quilloservice::adminpage {

namespace {

constexpr std::string_view kStyle = R"css(
:root { color-scheme: light dark; }
body { max-width: 60rem; margin: 0 auto; padding: 1.5rem; font: 16px/1.5 system-ui, sans-serif; }
h1 { font-size: 1.4rem; }
ul { list-style: none; margin: 0; padding-left: 1.5rem; }
li { padding: .15rem 0; }
main > ul { padding-left: 0; }
summary { display: inline-block; cursor: pointer; overflow-wrap: anywhere; }
summary::before { content: "\25B8\00A0"; }
details[open] > summary::before { content: "\25BE\00A0"; }
button { font: inherit; font-size: .8rem; margin-left: .4rem; }
:focus-visible { outline: 3px solid Highlight; outline-offset: 2px; }
#status { min-height: 1.5rem; }
input { font: inherit; width: 100%; box-sizing: border-box; }
dialog { min-width: 20rem; }
dialog menu { padding: 0; text-align: right; }
)css";

constexpr std::string_view kBody = R"html(
<h1>Places of this service</h1>
<p>Changes appear at once in every program that follows them.</p>
<p id="status" role="status"></p>
<p><button id="add">Add account</button></p>
<ul id="places"></ul>
<dialog aria-labelledby="question">
<form method="dialog">
<p><label id="question" for="name"></label></p>
<p><input id="name" maxlength="1024" autocomplete="off"></p>
<menu><button id="cancel" type="button">Cancel</button> <button id="go" value="go">OK</button></menu>
</form>
</dialog>
)html";

// Each list on the page is kept by what it is the list of; a list that changes is read again, and
// what stands in it already keeps its element, with all that is open below it.
constexpr std::string_view kScript = R"js(
"use strict";
const kinds = {
  account: {path: "/v1/accounts/", list: "workspaces", child: "workspace", key: "workspaces"},
  workspace: {path: "/v1/workspaces/", list: "projects", child: "project", key: "projects"},
  project: {path: "/v1/projects/", child: "folder"},
  folder: {path: "/v1/folders/", list: "children", child: "folder", key: "assets"},
};
const find = (id) => document.getElementById(id);
const token = document.querySelector("main").dataset.token;
const lists = new Map();

const lost = "The service cannot be reached; trying again.";
const tell = (text) => { find("status").textContent = text; };

async function ask(method, path, body) {
  const answer = await fetch(path, {
    method, headers: {Authorization: "Bearer " + token}, body: body && JSON.stringify(body)});
  if (answer.status === 204) return null;
  if (answer.status === 401) throw new Error("The sign-in has run out; reload the page.");
  const content = await answer.json();
  if (!answer.ok) throw new Error(content.error.message);
  return content;
}

async function attempt(doing, work) {
  try {
    await work();
    if (doing) tell(doing + ": done");
  } catch (error) {
    tell((doing ? doing + ": " : "") + error.message);
  }
}

function prompt(question, name) {
  const dialog = document.querySelector("dialog");
  find("question").textContent = question;
  find("name").hidden = name === undefined;
  find("name").required = name !== undefined;
  find("name").value = name ?? "";
  dialog.returnValue = "";
  dialog.showModal();
  find(name === undefined ? "go" : "name").focus();
  return new Promise((resolve) => {
    dialog.onclose = () => resolve(dialog.returnValue === "go" ? find("name").value || true : null);
  });
}

function button(label, name, action) {
  const made = document.createElement("button");
  made.textContent = label;
  made.setAttribute("aria-label", label + " " + name);
  made.onclick = action;
  return made;
}

/// The list that stands below a place: of a project, that of its root folder.
function listBelow(item) {
  const owner = item.type === "project" ? {id: item.root_folder.id, type: "folder"} : item;
  const kind = kinds[owner.type];
  return {of: owner.id, path: kind.path + owner.id + "/" + kind.list, key: kind.key,
          child: kind.child};
}

function add(list, inWhat) {
  return async () => {
    const name = await prompt("Name of the new " + list.child + inWhat, "");
    if (name !== null) await attempt("Add " + name, () => ask("POST", list.path, {name}));
  };
}

async function rename(item) {
  const name = await prompt("New name of " + item.name, item.name);
  if (name === null) return;
  await attempt("Rename " + item.name, () => ask("PATCH", kinds[item.type].path + item.id, {name}));
}

async function remove(item) {
  if (await prompt("Remove " + item.name + "?") === null) return;
  await attempt("Remove " + item.name, () => ask("DELETE", kinds[item.type].path + item.id));
}

function makePlace(item) {
  const place = document.createElement("li");
  if (!kinds[item.type]) {
    place.textContent = item.name + (item.type === "file" ? " (file)" : " (versions)");
    return place;
  }
  const details = document.createElement("details");
  const summary = document.createElement("summary");
  const children = document.createElement("ul");
  const below = listBelow(item);
  summary.textContent = item.name;
  details.append(summary,
                 button("Add " + below.child, "in " + item.name, add(below, " in " + item.name)),
                 button("Rename", item.name, () => rename(item)),
                 button("Remove", item.name, () => remove(item)), children);
  details.ontoggle = () => {
    if (!details.open) return lists.delete(below.of);
    lists.set(below.of, {...below, element: children});
    attempt("", () => show(below.of));
  };
  place.append(details);
  return place;
}

async function show(of) {
  const list = lists.get(of);
  if (!list) return;
  const items = (await ask("GET", list.path))[list.key];
  const before = new Map([...list.element.children].map((child) => [child.dataset.id, child]));
  const hadFocus = list.element.contains(document.activeElement);
  items.forEach((item, index) => {
    item.type ??= list.child;
    let place = before.get(item.id);
    if (place?.dataset.name !== item.name) {
      const made = makePlace(item);
      made.dataset.id = item.id;
      made.dataset.name = item.name;
      if (place?.querySelector("details")?.open) made.querySelector("details").open = true;
      place?.replaceWith(made);
      place = made;
    }
    before.delete(item.id);
    const standing = list.element.children[index];
    if (standing !== place) list.element.insertBefore(place, standing ?? null);
  });
  for (const gone of before.values()) gone.remove();
  if (hadFocus && !list.element.contains(document.activeElement)) {
    (list.element.parentElement.querySelector("summary") ?? find("add")).focus();
  }
}

async function follow() {
  let last = null;
  for (;;) {
    try {
      const headers = {Authorization: "Bearer " + token};
      if (last) headers["Last-Event-ID"] = last;
      const answer = await fetch("/v1/events", {headers});
      if (answer.status === 401) return tell("The sign-in has run out; reload the page.");
      if (find("status").textContent === lost) tell("");
      const reader = answer.body.pipeThrough(new TextDecoderStream()).getReader();
      let text = "";
      for (;;) {
        const {value, done} = await reader.read();
        if (done) break;
        const events = (text + value).split("\n\n");
        text = events.pop();
        for (const event of events) {
          const fields = Object.fromEntries(
            event.split("\n").map((line) => [line.split(": ", 1)[0],
                                             line.slice(line.indexOf(": ") + 2)]));
          last = fields.id ?? last;
          const of = fields.event === "changed" ? JSON.parse(fields.data).of ?? "" : null;
          const changed = fields.event === "reset" ? [...lists.keys()] : of === null ? [] : [of];
          for (const each of changed) attempt("", () => show(each));
        }
      }
    } catch {
      tell(lost);
    }
    await new Promise((resolve) => setTimeout(resolve, 2000));
  }
}

const accounts = {path: "/v1/accounts", key: "accounts", child: "account", element: find("places")};
lists.set("", accounts);
find("add").onclick = add(accounts, "");
find("cancel").onclick = () => document.querySelector("dialog").close();
attempt("", () => show(""));
follow();
)js";

}  // namespace

std::string SecurityPolicy() {
    static const std::string policy =
        "default-src 'none'; connect-src 'self'; script-src " + htmlpage::PolicySource(kScript) +
        "; style-src " + htmlpage::PolicySource(kStyle) +
        "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
    return policy;
}

std::string Render(const std::string& token) {
    std::string body = "<main data-token=\"" + EscapeHtml(token) + "\">";
    body += kBody;
    body += "</main>\n<script>";
    body += kScript;
    body += "</script>\n";
    return htmlpage::Document("Places of this service", kStyle, body);
}

std::string RenderRefused() {
    return htmlpage::Document(
        "Not here", kStyle,
        "<main><h1>This page is not for you</h1>\n<p>It is shown on the service's own machine, "
        "under http://localhost or http://127.0.0.1, by a service that was started with "
        "<code>--trust-local-user</code>.</p></main>\n");
}

}  // namespace quilloservice::adminpage
