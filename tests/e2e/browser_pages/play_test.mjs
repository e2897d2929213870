// Movies of many kinds, shared by quillo-host and played on the review page in Chromium: their length, their shape and
// the colour in their middle are those of the movie.

import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, rm } from "node:fs/promises";
import os from "node:os";
import path from "node:path";
import process from "node:process";
import { createInterface } from "node:readline";
import { after, before, test } from "node:test";

import { chromium } from "playwright-core";

const BIN = process.env.QUILLO_BIN;
const PATIENCE = 240_000; // milliseconds until something that must happen counts as missing
const RED = "color=c=0xC8281E:s=160x90:d=1";
const PQ = "zscale=tin=bt709:min=bt709:pin=bt709:t=smpte2084:m=bt2020nc:p=bt2020:npl=203,format=yuv420p10le";
const PQ_TAGS = ["-color_trc", "smpte2084", "-color_primaries", "bt2020", "-colorspace", "bt2020nc"];
const SOUND = ["-f", "lavfi", "-i", "sine=d=1"];

const CASES = [
  { name: "hevc.mp4", source: RED, encoding: ["-c:v", "libx265", "-x265-params", "log-level=none", "-pix_fmt", "yuv420p10le"],
    colour: [200, 40, 30] },
  { name: "prores.mov", source: RED, encoding: ["-c:v", "prores_ks", "-timecode", "01:00:00:00"], colour: [200, 40, 30] },
  { name: "full range.mov", source: RED, encoding: ["-c:v", "mjpeg", "-pix_fmt", "yuvj422p"], colour: [200, 40, 30] },
  { name: "rgb.mkv", source: "color=c=0xC8281E:s=1280x720:d=1:r=10,format=gbrp", encoding: ["-c:v", "libx264rgb"],
    colour: [200, 40, 30], width: 1280, height: 720 },
  { name: "pq.mkv", source: `color=c=white:s=160x90:d=1,${PQ}`,
    encoding: ["-c:v", "libx265", "-x265-params", "log-level=none", ...PQ_TAGS], colour: [193, 193, 193] },
  { name: "odd.mp4", source: `${RED},format=yuv444p,crop=97:55:exact=1`, encoding: ["-pix_fmt", "yuv444p"],
    colour: [200, 40, 30], width: 99, height: 56 }, // 98 pixels, each a little wider than high
  { name: "wide pixels.mp4", source: `${RED},setsar=2`, encoding: [], colour: [200, 40, 30], width: 320 },
  { name: "held.gif", source: RED.replace("d=1", "d=1:r=5"), encoding: ["-final_delay", "200"],
    colour: null, duration: 2.8 }, // in colours of a palette
  { name: "surround.mkv", source: RED, encoding: [...SOUND, "-ac", "6", "-c:a", "ac3"], colour: [200, 40, 30] },
];

let directory, service, address, browser;

before(async () => {
  directory = await mkdtemp(path.join(os.tmpdir(), "quillo-play-"));
  service = spawn(path.join(BIN, "quillo-service"), ["--data", path.join(directory, "service"), "--trust-local-user"],
                  { stdio: ["ignore", "pipe", "inherit"] });
  for await (const line of createInterface({ input: service.stdout })) {
    address = line.match(/listening on (\S+)/)?.[1];
    if (address) break;
  }
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--disable-gpu"], timeout: PATIENCE });
});

after(async () => {
  await browser?.close();
  service.kill();
  await once(service, "exit");
  await rm(directory, { recursive: true });
});

for (const { name, source, encoding, colour, width = 160, height = 90, duration = 1 } of CASES) {
  test(`${name} plays as it is`, async () => {
    const movie = path.join(directory, name);
    // Options of inputs come before those of the output.
    const inputs = encoding.slice(0, encoding.indexOf("-i") + 2).filter(() => encoding.includes("-i"));
    const options = encoding.slice(inputs.length);
    execFileSync("ffmpeg", ["-nostdin", "-v", "error", "-f", "lavfi", "-i", source, ...inputs, ...options, movie]);
    const shared = JSON.parse(execFileSync(
      path.join(BIN, "quillo-host"),
      ["share", movie, "--json", "--service", address, "--data", path.join(directory, "state")],
      { stdio: ["ignore", "pipe", "ignore"] }));

    const page = await browser.newPage();
    page.setDefaultTimeout(PATIENCE);
    await page.goto(shared.link);
    const played = await page.evaluate(async () => {
      const video = document.querySelector("video");
      const happens = (event) => new Promise((resolve, reject) => {
        video.addEventListener(event, resolve, { once: true });
        video.addEventListener("error", () => reject(new Error(video.error.message)), { once: true });
      });
      if (video.readyState < HTMLMediaElement.HAVE_METADATA) await happens("loadedmetadata");
      video.muted = true;
      const ended = happens("ended");
      await video.play();
      await ended;
      const canvas = document.createElement("canvas");
      canvas.width = video.videoWidth;
      canvas.height = video.videoHeight;
      const pen = canvas.getContext("2d");
      pen.drawImage(video, 0, 0);
      return {
        duration: video.duration, width: video.videoWidth, height: video.videoHeight,
        colour: [...pen.getImageData(canvas.width / 2, canvas.height / 2, 1, 1).data].slice(0, 3),
      };
    });
    await page.close();
    assert.deepEqual([played.width, played.height], [width, height]);
    assert.ok(Math.abs(played.duration - duration) <= 0.05, `it plays for ${played.duration} s`);
    for (const i of colour ? [0, 1, 2] : [])
      assert.ok(Math.abs(played.colour[i] - colour[i]) <= 6, `its colour is ${played.colour}`);
  });
}
