// A stock tus client uploads from a page of another origin, in Chromium: the service has to let the page in, and to let
// it read what the protocol says in headers.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { createHash } from "node:crypto";
import { once } from "node:events";
import { mkdtemp, readFile, rm } from "node:fs/promises";
import http from "node:http";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";
import process from "node:process";
import { createInterface } from "node:readline";
import { after, before, test } from "node:test";

import { chromium } from "playwright-core";

const PATIENCE = 240_000; // milliseconds
const SIZE = 3_000_000;
const CUT_AFTER = 2_000_000;
const FLAGS = ["--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
               "--disable-component-update", "--disable-sync"];
const CLIENT = await readFile(createRequire(import.meta.url).resolve("tus-js-client/dist/tus.min.js"));

let directory, service, address, pages, browser;

before(async () => {
  directory = await mkdtemp(path.join(os.tmpdir(), "quillo-upload-"));
  pages = http.createServer((request, response) => {
    const isScript = request.url === "/tus.js";
    response.writeHead(200, { "Content-Type": isScript ? "text/javascript" : "text/html" });
    response.end(isScript ? CLIENT : '<!doctype html><title>Upload</title><script src="/tus.js"></script>');
  });
  pages.listen(0, "127.0.0.1");
  await once(pages, "listening");
  service = spawn(path.join(process.env.QUILLO_BIN, "quillo-service"), [
    "--data", path.join(directory, "service"), "--trust-local-user", "--drop-upload-after", String(CUT_AFTER),
    "--allow-origin", `http://127.0.0.1:${pages.address().port}`,
  ], { stdio: ["ignore", "pipe", "inherit"], env: { ...process.env, XDG_RUNTIME_DIR: directory } });
  const [line] = await once(createInterface({ input: service.stdout }), "line");
  address = line.split(" ").at(-1);
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: FLAGS, timeout: PATIENCE });
});

after(async () => {
  await browser?.close();
  pages.close();
  service.kill();
  await once(service, "exit");
  await rm(directory, { recursive: true });
});

async function signIn() {
  const secret = await readFile(path.join(directory, "quillo", new URL(address).port, "127.0.0.1.secret"), "utf8");
  const answer = await fetch(`${address}/oauth/token`, { method: "POST", body: new URLSearchParams({
    client_id: "stock tus client", grant_type: "urn:quillo:grant-type:local-user", local_user_secret: secret.trim() }) });
  assert.equal(answer.status, 200);
  return (await answer.json()).access_token;
}

async function get(token, where) {
  const answer = await fetch(new URL(where, address),
                             { headers: { Authorization: `Bearer ${token}`, "Tus-Resumable": "1.0.0" } });
  assert.equal(answer.status, 200, where);
  return answer.json();
}

async function firstFolder(token) {
  const account = (await get(token, "/v1/accounts")).accounts[0].id;
  const workspace = (await get(token, `/v1/accounts/${account}/workspaces`)).workspaces[0].id;
  return (await get(token, `/v1/workspaces/${workspace}/projects`)).projects[0].root_folder.id;
}

for (const streams of [1, 2]) {
  test(`a page of the allowed origin uploads in ${streams} at a time, is cut, and goes on`, async () => {
    const token = await signIn();
    const folder = await firstFolder(token);
    const page = await (await browser.newContext()).newPage();
    page.setDefaultTimeout(PATIENCE);
    await page.goto(`http://127.0.0.1:${pages.address().port}/`);
    const uploaded = await page.evaluate(({ endpoint, token, folder, size, streams }) => new Promise((resolve, reject) => {
      const bytes = Uint8Array.from({ length: size }, (_, place) => (place * 31) % 251);
      const upload = new globalThis.tus.Upload(new Blob([bytes]), {
        endpoint, headers: { Authorization: `Bearer ${token}` }, chunkSize: 1_500_000, retryDelays: [0, 0],
        parallelUploads: streams,
        metadata: { filename: "From a page.mp4", folder_id: folder },
        onError: reject, onSuccess: () => resolve(upload.url),
      });
      upload.start();
    }), { endpoint: `${address}/v1/uploads`, token, folder, size: SIZE, streams });

    const asset = await get(token, `${new URL(uploaded).pathname}/asset`);
    const bytes = Buffer.from(Uint8Array.from({ length: SIZE }, (_, place) => (place * 31) % 251));
    assert.equal(asset.sha256, createHash("sha256").update(bytes).digest("hex"));
    assert.equal(asset.asset.name, "From a page.mp4");
  });
}

test("a page of another origin gets nowhere", async () => {
  const token = await signIn();
  const stranger = http.createServer((_, response) => response.end("<!doctype html><title>Elsewhere</title>"));
  stranger.listen(0, "127.0.0.1");
  await once(stranger, "listening");
  try {
    const page = await (await browser.newContext()).newPage();
    await page.goto(`http://127.0.0.1:${stranger.address().port}/`);
    const read = await page.evaluate(({ url, token }) => fetch(url, { headers: { Authorization: `Bearer ${token}` } })
      .then(() => "read", () => "refused"), { url: `${address}/v1/me`, token });
    assert.equal(read, "refused");
  } finally {
    stranger.close();
  }
});
