"use strict";
const kinds = {
  account: {path: "/v1/accounts/", list: "workspaces", child: "workspace", key: "workspaces"},
  workspace: {path: "/v1/workspaces/", list: "projects", child: "project", key: "projects"},
  project: {path: "/v1/projects/", child: "folder"},
  folder: {path: "/v1/folders/", list: "children", child: "folder", key: "assets"},
};
const find = (id) => document.getElementById(id);

// The open lists, by the ID of their parent. When a list has changed it is fetched again; entries that
// remain keep their elements, with everything that is open below them.
const lists = new Map();

// The authorization code grant with PKCE (RFC 6749, 7636). The session ends with the tab at the latest.
const client = "Quillo locations page";
const redirectUri = location.origin + "/admin";
const ranOut = "The sign-in has run out. Sign in again.";
let session = null;  // while signed in: the token, and the controller that aborts requests

const unreachable = "The service cannot be reached.";
const lost = unreachable + " Trying again.";
const tell = (text) => { find("status").textContent = text; };

function send(path, request) {
  return fetch(path, request).catch((error) => {
    throw error.name === "AbortError" ? error : new Error(unreachable);
  });
}

async function ask(method, path, body) {
  const asking = session;
  const response = await send(path, {
    method, headers: {Authorization: "Bearer " + asking.token}, signal: asking.end.signal,
    body: body && JSON.stringify(body)});
  if (response.status === 204) return null;
  if (response.status === 401) {
    if (asking === session) showSignedOut(ranOut);
    throw new Error(ranOut);
  }
  const content = await response.json();
  if (!response.ok) throw new Error(content.error.message);
  return content;
}

async function attempt(doing, work) {
  try {
    await work();
    if (doing) tell(doing + ": done");
  } catch (error) {
    if (error.name === "AbortError") return;  // signed out in the meantime
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

/// The list below a location; for a project, the list of its root folder.
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

function makeLocation(item) {
  const entry = document.createElement("li");
  if (!kinds[item.type]) {
    entry.textContent = item.name + (item.type === "file" ? " (file)" : " (versions)");
    return entry;
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
  entry.append(details);
  return entry;
}

async function show(of) {
  const list = lists.get(of);
  if (!list) return;
  const items = (await ask("GET", list.path))[list.key];
  const before = new Map([...list.element.children].map((child) => [child.dataset.id, child]));
  const hadFocus = list.element.contains(document.activeElement);
  items.forEach((item, index) => {
    item.type ??= list.child;
    let entry = before.get(item.id);
    if (entry?.dataset.name !== item.name) {
      const made = makeLocation(item);
      made.dataset.id = item.id;
      made.dataset.name = item.name;
      if (entry?.querySelector("details")?.open) made.querySelector("details").open = true;
      entry?.replaceWith(made);
      entry = made;
    }
    before.delete(item.id);
    const standing = list.element.children[index];
    if (standing !== entry) list.element.insertBefore(entry, standing ?? null);
  });
  for (const gone of before.values()) gone.remove();
  if (hadFocus && !list.element.contains(document.activeElement)) {
    (list.element.parentElement.querySelector("summary") ?? find("add")).focus();
  }
}

/// Reads events and refreshes the changed lists, until `following` ends.
async function follow(following) {
  let last = null;
  while (!following.end.signal.aborted) {
    try {
      const headers = {Authorization: "Bearer " + following.token};
      if (last) headers["Last-Event-ID"] = last;
      const response = await fetch("/v1/events", {headers, signal: following.end.signal});
      if (response.status === 401) return showSignedOut(ranOut);
      if (!response.ok) throw new Error();
      if (find("status").textContent === lost) tell("");
      const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
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
          if (fields.event === "changed") {
            attempt("", () => show(JSON.parse(fields.data).of ?? ""));
          } else if (fields.event) {  // ready or reset: the stream starts, so all lists are refreshed
            for (const each of lists.keys()) attempt("", () => show(each));
          }
        }
      }
    } catch {
      if (following.end.signal.aborted) return;
      tell(lost);
    }
    await new Promise((resolve) => setTimeout(resolve, 2000));
  }
}

const base64url = (bytes) => btoa(String.fromCharCode(...bytes))
  .replaceAll("+", "-").replaceAll("/", "_").replaceAll("=", "");
const secret = () => base64url(crypto.getRandomValues(new Uint8Array(32)));
const post = (path, fields) => send(path, {method: "POST", body: new URLSearchParams(fields)});

async function signIn() {
  const begun = {state: secret(), verifier: secret()};
  sessionStorage.setItem("sign-in", JSON.stringify(begun));
  const digest = await crypto.subtle.digest("SHA-256", new TextEncoder().encode(begun.verifier));
  location.assign("/oauth/authorize?" + new URLSearchParams({
    response_type: "code", client_id: client, redirect_uri: redirectUri, state: begun.state,
    code_challenge: base64url(new Uint8Array(digest)), code_challenge_method: "S256"}));
}

/// Completes the sign-in if the browser has returned from its page with a code or an error.
async function endSignIn() {
  const back = new URLSearchParams(location.search);
  if (!back.has("state")) return;
  history.replaceState(null, "", location.pathname);
  const begun = JSON.parse(sessionStorage.getItem("sign-in"));
  sessionStorage.removeItem("sign-in");
  if (back.get("state") !== begun?.state) {
    throw new Error("This is not the sign-in that was begun here. Sign in again.");
  }
  if (back.get("error") === "access_denied") throw new Error("The access was denied.");
  if (!back.has("code")) throw new Error("The sign-in failed. " + (back.get("error_description") ?? ""));
  const response = await post("/oauth/token", {
    grant_type: "authorization_code", client_id: client, redirect_uri: redirectUri,
    code: back.get("code"), code_verifier: begun.verifier});
  const granted = await response.json();
  if (!response.ok) throw new Error("The sign-in failed. " + (granted.error_description ?? ""));
  sessionStorage.setItem("token", granted.access_token);
}

async function signOut() {
  const token = session.token;
  showSignedOut("Signed out.");
  await attempt("", () => post("/oauth/revoke", {token}));
}

function showSignedOut(text) {
  session?.end.abort();
  session = null;
  sessionStorage.removeItem("token");
  lists.clear();
  find("locations").replaceChildren();
  document.querySelector("dialog").close();
  const hadFocus = find("signed-in").contains(document.activeElement);
  find("signed-in").hidden = true;
  find("signed-out").hidden = false;
  if (hadFocus) find("sign-in").focus();
  tell(text);
}

function showSignedIn(token) {
  session = {token, end: new AbortController()};
  lists.set("", {path: "/v1/accounts", key: "accounts", child: "account", element: find("locations")});
  find("user").textContent = "";
  find("signed-out").hidden = true;
  find("signed-in").hidden = false;
  follow(session);
  attempt("", async () => {
    find("user").textContent = (await ask("GET", "/v1/me")).user.name;
  });
}

async function begin() {
  await attempt("", endSignIn);
  const token = sessionStorage.getItem("token");
  if (token) showSignedIn(token);
  else showSignedOut(find("status").textContent);
}

find("sign-in").onclick = () => attempt("", signIn);
find("sign-out").onclick = signOut;
find("add").onclick = () => add(lists.get(""), "")();
find("cancel").onclick = () => document.querySelector("dialog").close();
begin();
