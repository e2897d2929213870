// Every page that a browser is shown, in Chromium: what it is for works, and axe finds nothing wrong with it, in the
// light and the dark scheme, on a wide and on a narrow window. With QUILLO_SCREENSHOTS=DIRECTORY pictures of all of
// them are left there.

import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { randomUUID } from "node:crypto";
import { once } from "node:events";
import { mkdtemp, readFile, rm, writeFile } from "node:fs/promises";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";
import process from "node:process";
import { createInterface } from "node:readline";
import { after, before, test } from "node:test";

import { chromium } from "playwright-core";

const BIN = process.env.QUILLO_BIN;
const SCREENSHOTS = process.env.QUILLO_SCREENSHOTS;
const AXE = await readFile(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const PATIENCE = 240_000; // milliseconds until something that must happen counts as missing
const SCHEMES = ["light", "dark"];
const WIDTHS = [390, 1280];
const ELSEWHERE = "elsewhere.example"; // a name of this machine that is no loopback name
const FLAGS = ["--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
               "--disable-component-update", "--disable-sync",
               `--host-resolver-rules=MAP ${ELSEWHERE} 127.0.0.1, MAP * ~NOTFOUND, EXCLUDE 127.0.0.1`];

let directory, service, address, browser, page;
const blocked = []; // by a page's own Content-Security-Policy

/// Starts a program; it ends with the tests.
function start(program, ...parameters) {
  return spawn(path.join(BIN, program), parameters, { stdio: ["ignore", "pipe", "inherit"] });
}

async function openTab(options = {}) {
  const context = await browser.newContext(options);
  context.setDefaultTimeout(PATIENCE);
  const tab = await context.newPage();
  tab.on("console", (message) => {
    if (message.text().includes("Content Security Policy")) blocked.push(message.text());
  });
  return tab;
}

before(async () => {
  directory = await mkdtemp(path.join(os.tmpdir(), "quillo-pages-"));
  service = start("quillo-service", "--data", path.join(directory, "service"));
  for await (const line of createInterface({ input: service.stdout })) {
    address = line.match(/listening on (\S+)/)?.[1];
    if (address) break;
  }
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: FLAGS, timeout: PATIENCE });
  page = await openTab();
});

after(async () => {
  await browser?.close();
  service.kill();
  await once(service, "exit");
  await rm(directory, { recursive: true });
});

/// Looks at the page that is shown now, under the `name` that its pictures get.
async function check(name, tab = page) {
  await tab.evaluate(AXE);
  for (const colorScheme of SCHEMES) {
    for (const width of WIDTHS) {
      await tab.emulateMedia({ colorScheme });
      await tab.setViewportSize({ width, height: 800 });
      const { found, cut } = await tab.evaluate(async () => ({
        found: (await globalThis.axe.run(document)).violations.flatMap(
          (rule) => rule.nodes.map((node) => `${rule.id}: ${node.target} ${node.failureSummary}`)),
        cut: [document.documentElement, ...document.querySelectorAll("body *")].filter(
          (element) => element.scrollWidth > element.clientWidth &&
                       (element === document.documentElement || getComputedStyle(element).overflowX === "hidden"))
          .map((element) => element.outerHTML.slice(0, 80)),
      }));
      assert.deepEqual(found, [], `${name}, ${colorScheme}, ${width} px`);
      assert.deepEqual(cut, [], `${name} does not fit into ${width} px`);
      if (!SCREENSHOTS) continue;
      await tab.screenshot({ path: path.join(SCREENSHOTS, `${name}-${colorScheme}-${width}.png`), fullPage: true });
    }
  }
}

async function visit(url, status, tab = page) {
  assert.equal((await tab.goto(new URL(url, address).href)).status(), status, url);
}

/// Fills in the sign-in form and sends it.
async function signIn(decision, { tab = page, password = "review", user } = {}) {
  if (user) await tab.getByLabel("User name").fill(user);
  await tab.getByLabel("Password").fill(password);
  await tab.getByRole("button", { name: decision }).click();
}

function statusIs(text, tab = page) {
  return tab.getByRole("status").filter({ hasText: text }).waitFor();
}

/// The token that the page of locations was given.
function token() {
  return page.evaluate(() => sessionStorage.getItem("token"));
}

async function call(bearer, url, options = {}) {
  const headers = { Authorization: `Bearer ${bearer}`, "Tus-Resumable": "1.0.0", ...options.headers };
  return fetch(new URL(url, address), { ...options, headers });
}

test("the start page, and what is not there", async () => {
  await visit("/", 200);
  await check("start");
  await page.getByRole("link", { name: "Locations" }).click();
  await page.getByRole("button", { name: "Sign in" }).waitFor();
  await visit("/nothing", 404);
  await check("not-found");
  await visit("/r/nothing", 404);
  await check("no-review");
  await visit("/oauth/authorize?client_id=x&redirect_uri=http://evil.example/", 400);
  await check("refusal");
  await visit(`http://${ELSEWHERE}:${new URL(address).port}/admin`, 403);
  await check("no-locations");
});

test("the page of locations says that it needs scripts", async () => {
  const tab = await openTab({ javaScriptEnabled: false });
  await visit("/admin", 200, tab);
  assert.match(await tab.evaluate(() => document.body.innerText), /This page needs scripts/);
  await tab.context().close();
  // axe is a script itself: it gets to see what stands there for browsers that run none.
  await visit("/admin", 200);
  await page.evaluate(() => {
    const alternative = document.querySelector("noscript");
    alternative.outerHTML = alternative.textContent;
  });
  await check("locations-without-scripts");
});

test("the page of locations signs in and out", async () => {
  await visit("/admin", 200);
  await check("locations-signed-out");
  await page.getByRole("button", { name: "Sign in" }).click();
  await page.getByLabel("Password").waitFor();
  await check("sign-in");
  await signIn("Deny");
  await statusIs("The access was denied.");

  await page.getByRole("button", { name: "Sign in" }).click();
  await signIn("Allow", { password: "wrong" });
  await page.getByRole("alert").waitFor();
  await check("sign-in-wrong");
  await signIn("Allow", { user: "Alex Moreau" });
  await page.getByText("Signed in as Alex Moreau").waitFor();
  assert.equal(page.url(), `${address}/admin`);

  // A code that the page has not asked for signs nobody in, and nobody out.
  await visit("/admin?code=x&state=x", 200);
  await page.getByText("Signed in as Alex Moreau").waitFor();
  await statusIs("This is not the sign-in that was begun here.");

  const bearer = await token();
  assert.equal((await call(bearer, "/v1/me")).status, 200);
  const revoked = page.waitForResponse("**/oauth/revoke");
  await page.getByRole("button", { name: "Sign out" }).click();
  await statusIs("Signed out.");
  await revoked;
  assert.equal((await call(bearer, "/v1/me")).status, 401);
  await page.reload();
  await page.getByRole("button", { name: "Sign in" }).waitFor();
});

test("locations are made on their page", async () => {
  await visit("/admin", 200);
  await page.getByRole("button", { name: "Sign in" }).click();
  await signIn("Allow");
  await page.getByText("Signed in as Robin Ellery").waitFor();
  await page.getByRole("button", { name: "Add account" }).click();
  await check("locations-dialog");
  await page.getByRole("textbox").fill("A new account with a name that is long enough to need more than one line");
  await page.getByRole("button", { name: "OK" }).click();
  await page.getByText("A new account").first().waitFor();
  for (const name of ["Northlight Pictures", "Feature Films", "The Long River"]) {
    await page.locator("summary").getByText(name, { exact: true }).click();
  }
  await page.locator("summary").getByText("Editorial", { exact: true }).waitFor();
  await check("locations");
});

test("reviewers see what a link has", async () => {
  const bearer = await token();
  const ask = async (url, body) => (await call(bearer, url, body && { method: "POST", body: JSON.stringify(body) })).json();
  const [account] = (await ask("/v1/accounts")).accounts;
  const [workspace] = (await ask(`/v1/accounts/${account.id}/workspaces`)).workspaces;
  const [project] = (await ask(`/v1/workspaces/${workspace.id}/projects`)).projects;
  const link = (await ask(`/v1/projects/${project.id}/review-links`, { name: "The Long River, second cut" })).review_link;
  await visit(link.url, 200);
  await check("review-empty");

  const clip = path.join(directory, "clip.mp4");
  execFileSync("ffmpeg", ["-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=320x180:d=1", clip]);
  const movie = await readFile(clip);
  const base64 = (text) => Buffer.from(text).toString("base64");
  const share = async (name, stack) => {
    const upload = (await call(bearer, "/v1/uploads", { method: "POST", headers: {
      "Upload-Length": movie.length,
      "Upload-Metadata": `filename ${base64(name)},folder_id ${base64(project.root_folder.id)}` +
                         (stack ? `,version_stack_id ${base64(stack)}` : "") } })).headers.get("Location");
    await call(bearer, upload, { method: "PATCH", body: movie, headers: {
      "Content-Type": "application/offset+octet-stream", "Upload-Offset": 0 } });
    const { asset } = await ask(`${upload}/asset`);
    await ask(`/v1/review-links/${link.id}/assets`, { asset_ids: [asset.id] });
  };
  const stack = randomUUID();
  await share("Rough cut.mp4", stack);
  await share("Rough cut.mp4", stack);
  await share("A_name_without_a_single_blank_that_is_far_longer_than_a_telephone_is_wide.mp4");
  await visit(link.url, 200);
  await page.waitForFunction(() => [...document.querySelectorAll("video")].every((video) => video.readyState > 0));
  await check("review");
});

test("the program's own pages show how a sign-in ended", async () => {
  const pipe = path.join(directory, "opened");
  const opener = path.join(directory, "browser");
  execFileSync("mkfifo", [pipe]);
  await writeFile(opener, `#!/bin/sh\nprintf %s "$1" >'${pipe}'\n`, { mode: 0o700 });
  const begin = async () => {
    const host = start("quillo-host", "sign-in", "--service", address, "--data", path.join(directory, "host"),
                       "--browser", opener);
    const ended = once(host, "exit");
    const opened = await Promise.race([
      readFile(pipe, "utf8"), ended.then(() => assert.fail("the program has ended before it opened the browser"))]);
    return { opened, ended };
  };

  const denied = await begin();
  await visit(denied.opened, 200);
  await signIn("Deny");
  await page.getByRole("heading", { name: "Not signed in" }).waitFor();
  await check("denied");
  assert.notEqual((await denied.ended)[0], 0);

  const allowed = await begin();
  const back = new URL(allowed.opened).searchParams.get("redirect_uri");
  await visit(`${back}?code=x&state=x`, 400);
  await check("not-the-sign-in");
  await visit(allowed.opened, 200);
  await signIn("Allow");
  await page.getByRole("heading", { name: "Thank you" }).waitFor();
  await check("allowed");
  assert.equal((await allowed.ended)[0], 0);
});

test("no page was kept from anything by its own policy", () => {
  assert.deepEqual(blocked, []);
});
