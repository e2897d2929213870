// Runs a test program against the stock tus server: node serve.mjs PROGRAM. Exits as it does.
//
// The server lies behind a relay that cuts the first connection over which more than CUT_AFTER bytes come. What our
// service has besides the protocol, telling what became of a complete upload, is added here.

import { spawn } from "node:child_process";
import { createHash, randomUUID } from "node:crypto";
import { once } from "node:events";
import { createReadStream } from "node:fs";
import { mkdtemp, rm } from "node:fs/promises";
import http from "node:http";
import net from "node:net";
import os from "node:os";
import path from "node:path";
import process from "node:process";

import { FileStore } from "@tus/file-store";
import { Server } from "@tus/server";

const UPLOADS = "/v1/uploads";
const CUT_AFTER = 11 << 20; // in the midst of the second piece

const directory = await mkdtemp(path.join(os.tmpdir(), "quillo-tus-"));
const datastore = new FileStore({ directory });
const tus = new Server({ path: UPLOADS, datastore });
const requests = [];

async function describeAsset(id) {
  const upload = await datastore.getUpload(id);
  if (upload.offset !== upload.size) return null;
  const hash = createHash("sha256");
  for await (const piece of createReadStream(path.join(directory, id))) hash.update(piece);
  const asset = { id: randomUUID(), name: upload.metadata.filename, type: "file" };
  return { asset, sha256: hash.digest("hex"), bytes: upload.size };
}

const server = http.createServer(async (request, response) => {
  requests.push(request.method);
  const asset = request.url.match(`^${UPLOADS}/([0-9a-f]+)/asset$`);
  if (!asset) return tus.handle(request, response);
  const description = await describeAsset(asset[1]);
  response.writeHead(description ? 200 : 409, { "Content-Type": "application/json" });
  response.end(JSON.stringify(description ?? {}));
});

let cut = false;
const relay = net.createServer((client) => {
  const behind = net.connect(server.address().port, "127.0.0.1");
  let bytes = 0;
  client.on("data", (piece) => {
    bytes += piece.length;
    if (cut || bytes <= CUT_AFTER) return;
    cut = true;
    client.destroy();
    behind.destroy();
  });
  client.pipe(behind).pipe(client);
  for (const [one, other] of [[client, behind], [behind, client]]) one.on("error", () => other.destroy());
});

async function listen(listener) {
  listener.listen(0, "127.0.0.1");
  await once(listener, "listening");
  return listener.address().port;
}

await listen(server);
const address = `http://127.0.0.1:${await listen(relay)}`;
const program = spawn(process.argv[2], [], {
  stdio: "inherit",
  env: { ...process.env, QUILLO_SERVICE_URL: address },
});
const [status] = await once(program, "exit");
await rm(directory, { recursive: true });
console.log("requests:", requests.join(" "));
if (!cut || !requests.includes("HEAD")) console.error("serve.mjs: the upload was not cut and resumed");
process.exit(cut && requests.includes("HEAD") ? status ?? 1 : 1);
