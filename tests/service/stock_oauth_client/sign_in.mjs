// A stock OAuth client signs in to the service, of which it knows only the address: node sign_in.mjs PROGRAM.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, rm } from "node:fs/promises";
import os from "node:os";
import path from "node:path";
import process from "node:process";
import readline from "node:readline";

import * as oauth from "oauth4webapi";

const REDIRECT_URI = "http://127.0.0.1:5000/back";
const PASSWORD = "review";
const CLIENT = { client_id: "Stock client" };
const NO_SECRET = oauth.None();
const LOOPBACK = { [oauth.allowInsecureRequests]: true };

// Acts as the user in the browser: submits the form and allows the access. Returns the redirect's URL.
async function allow(authorization) {
  const page = await fetch(authorization);
  assert.equal(page.status, 200);
  const html = await page.text();
  const form = new URLSearchParams({ decision: "allow", password: PASSWORD });
  for (const [, name, value] of html.matchAll(/<input type="hidden" name="(\w+)" value="([^"]*)"/g)) form.set(name, value);
  form.set("user", html.match(/<option value="([^"]+)"/)[1]);
  const cookie = page.headers.get("set-cookie").split(";")[0];
  const answer = await fetch(new URL("/oauth/authorize", authorization), {
    method: "POST", body: form, headers: { cookie }, redirect: "manual",
  });
  assert.equal(answer.status, 303);
  return new URL(answer.headers.get("location"));
}

async function signIn(issuer) {
  const server = await oauth.processDiscoveryResponse(
    issuer, await oauth.discoveryRequest(issuer, { algorithm: "oauth2", ...LOOPBACK }));
  assert.ok(server.code_challenge_methods_supported.includes("S256"));
  for (const grant of ["authorization_code", "refresh_token"]) assert.ok(server.grant_types_supported.includes(grant));

  const verifier = oauth.generateRandomCodeVerifier();
  const state = oauth.generateRandomState();
  const authorization = new URL(server.authorization_endpoint);
  for (const [name, value] of Object.entries({
    response_type: "code", client_id: CLIENT.client_id, redirect_uri: REDIRECT_URI, state,
    code_challenge: await oauth.calculatePKCECodeChallenge(verifier), code_challenge_method: "S256",
  })) authorization.searchParams.set(name, value);
  const back = oauth.validateAuthResponse(server, CLIENT, await allow(authorization), state);

  const tokens = await oauth.processAuthorizationCodeResponse(server, CLIENT, await oauth.authorizationCodeGrantRequest(
    server, CLIENT, NO_SECRET, back, REDIRECT_URI, verifier, LOOPBACK));
  return { server, tokens };
}

async function renew(server, refreshToken) {
  return oauth.processRefreshTokenResponse(
    server, CLIENT, await oauth.refreshTokenGrantRequest(server, CLIENT, NO_SECRET, refreshToken, LOOPBACK));
}

async function statusWith(issuer, token) {
  try {
    const answer = await oauth.protectedResourceRequest(
      token, "GET", new URL("/v1/me", issuer), undefined, undefined, LOOPBACK);
    return answer.status;
  } catch (error) {
    if (error instanceof oauth.WWWAuthenticateChallengeError) return error.status;
    throw error;
  }
}

const directory = await mkdtemp(path.join(os.tmpdir(), "quillo-oauth-"));
const service = spawn(process.argv[2], ["--data", path.join(directory, "data"), "--stop-with-stdin"],
  { stdio: ["pipe", "pipe", "inherit"] });
try {
  const [line] = await once(readline.createInterface(service.stdout), "line");
  const issuer = new URL(line.split(" ").at(-1));
  const { server, tokens } = await signIn(issuer);
  assert.equal(await statusWith(issuer, tokens.access_token), 200);

  const renewed = await renew(server, tokens.refresh_token);
  assert.equal(await statusWith(issuer, renewed.access_token), 200);
  // Reuse of a refresh token ends the session.
  await assert.rejects(renew(server, tokens.refresh_token), { error: "invalid_grant", status: 400 });
  assert.equal(await statusWith(issuer, renewed.access_token), 401);

  const again = (await signIn(issuer)).tokens;
  await oauth.processRevocationResponse(
    await oauth.revocationRequest(server, CLIENT, NO_SECRET, again.refresh_token, LOOPBACK));
  assert.equal(await statusWith(issuer, again.access_token), 401);
} finally {
  service.stdin.end();
  if (service.exitCode === null) await once(service, "exit");
  await rm(directory, { recursive: true });
}
