// Tests in the browser: each has a server and a page of its own, and the page must have done nothing that it may not.

import assert from 'node:assert/strict';
import http from 'node:http';
import {after, before, test} from 'node:test';
import {setTimeout as pause} from 'node:timers/promises';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {CONTENT_TYPE, launchBrowser, openPage, startServer, stopServers} from './world.js';

const LONG = Number(process.env.LONG ?? 30_000);  // only so that what never happens fails the test instead of stopping it

export let browser;
before(async () => { browser = await launchBrowser(); });
after(async () => {
  await browser?.close();
  await stopServers();
});

// Runs with a server and a page of the console, and checks at the end that the page did nothing that it may not.
export function consoleTest(name, options, body) {
  test(name, {timeout: 120_000}, async (t) => {
    const server = await startServer(options.server);
    let page;
    try {
      page = await openPage(browser, server.console + (options.hash ?? ''), options.page);
      page.setDefaultTimeout(LONG);
      await body({t, server, page, go: (hash) => page.evaluate((to) => { location.hash = to; }, hash)});
      assert.deepEqual(page.complaints, []);
    } finally {
      await page?.context().close();
      await server.stop();
    }
  });
}

export const hasRow = (page, id) => page.waitForSelector(`[data-id="${id}"]`);
export const rowIds = (page) => page.evaluate(() => window.store.rows.map((row) => row.id));
export const bodyText = (page) => page.$$eval('.bodyview .line:not(.ghost)', (lines) => lines.map((line) => line.querySelector('.text').textContent));
export const idOf = async (server, path) => (await server.exchanges()).filter((row) => row.path === path).at(-1).id;

// A whole session: identity, three checkpoints, an outcome, a screen with its upload.
export async function playSession(server, identity = {}) {
  await server.call(PATHS.device, {...bodies.common({...identity}), device_data: {collectTime: 1, uuid: bodies.UUID}});
  await server.call(PATHS.config, {...bodies.common(identity), model: 'x86'});
  await server.call(PATHS.session, bodies.sessionData(identity));
  await server.call(PATHS.risk, bodies.checkpoint('LAUNCH', {}, identity));
  await server.call(PATHS.screen, bodies.screenEvent('START', 1700000001900, identity));
  await server.call(PATHS.risk, bodies.checkpoint('LOGIN', {user: bodies.user(identity.user)}, identity));
  const id = bodies.requestId();
  await server.call(PATHS.risk, bodies.transaction(12.5, {...identity, id}));
  await server.call(PATHS.outcome, bodies.outcome(id, 'APPROVED', identity));
  await server.call(PATHS.screen, bodies.screenEvent('END', 1700000004000, identity));
  await server.call(PATHS.bio, bodies.biometrics({identity}));
}

const VIEWS = ['live', 'problems', 'rules', 'faults', 's', 'bio', 'traces', 'export'];

export async function fillServer(server) {
  await playSession(server);
  const bad = bodies.transaction();
  delete bad.keys.requestID;
  await server.call(PATHS.risk, bad);
  await server.call(PATHS.traces, bodies.traces(server.url));
  await server.set('faults', [{path: '*', status: 503, times: 1}]);
}

export async function allViews(server) {
  return [...VIEWS, 'x/1', 'bio/' + await idOf(server, PATHS.bio), 'diff/1/2', 'nothing'];
}


// Sends calls at a rate over kept connections.
export async function load(server, count, perSecond) {
  const agent = new http.Agent({keepAlive: true, maxSockets: 8});
  const body = JSON.stringify(bodies.common());
  const {hostname, port} = new URL(server.url);
  const one = () => new Promise((resolve, reject) => {
    http.request({agent, hostname, port, method: 'POST', path: PATHS.enrich, headers: {'Content-Type': CONTENT_TYPE, 'Content-Length': body.length}},
                 (response) => response.resume().on('end', resolve)).on('error', reject).end(body);
  });
  const begin = Date.now();
  const sent = [];
  for (let done = 0; done < count;) {
    const due = Math.min(count, Math.ceil((Date.now() - begin) / 1000 * perSecond));
    for (; done < due; done += 1) sent.push(one());
    await pause(10);
  }
  await Promise.all(sent);
  agent.destroy();
  return Date.now() - begin;
}
