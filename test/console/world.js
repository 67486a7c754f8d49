// What the tests of the console stand on: the real risk server and a headless Chromium.

import {spawn} from 'node:child_process';
import {once} from 'node:events';
import {mkdtempSync, readFileSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {createInterface} from 'node:readline';
import {chromium} from 'playwright-core';

export const RISK_SERVER = process.env.RISK_SERVER;
export const DEMO_HOST = process.env.DEMO_HOST;
export const CHROMIUM = process.env.CHROMIUM ?? '/usr/bin/chromium';
export const CONTENT_TYPE = 'application/json; charset=utf-8';

// Without the flags for the network the browser would look for hosts that no test needs.
const FLAGS = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
               '--disable-component-update', '--disable-sync', '--disable-lcd-text'];

export function temporaryFolder() {
  const path = mkdtempSync(join(tmpdir(), 'console-test-'));
  return {path, file: (name) => join(path, name), remove: () => rmSync(path, {recursive: true, force: true})};
}

const servers = new Set();

// Stops what a test that failed has left.
export async function stopServers() {
  await Promise.all([...servers].map((server) => server.stop()));
}

// A server of one test: {url, console, stop(), call(), control()}.
export async function startServer(options = []) {
  const child = spawn(RISK_SERVER, ['--port', '0', '--signing-key', 'test key', ...options], {stdio: ['ignore', 'pipe', 'inherit']});
  const ended = once(child, 'exit');
  const lines = createInterface({input: child.stdout})[Symbol.asyncIterator]();
  const next = async (prefix) => (await lines.next()).value.slice(prefix.length);
  const url = await next('risk server ready at ');
  const consoleUrl = await next('console at ');
  const server = {
    url, console: consoleUrl, child,
    async stop() {
      servers.delete(server);
      child.kill('SIGTERM');
      await ended;
    },
    // {status, text} of a service call; `body` is sent as it stands if it is text or bytes.
    async call(path, body, {method = 'POST', contentType = CONTENT_TYPE} = {}) {
      const response = await fetch(url.slice(0, -1) + path, {
        method, headers: contentType ? {'Content-Type': contentType} : {},
        body: typeof body === 'string' || body instanceof Uint8Array ? body : JSON.stringify(body)});
      return {status: response.status, text: await response.text()};
    },
    control: async (path, options) => fetch(url + 'control/' + path, options),
    json: async (path) => (await fetch(url + 'control/' + path)).json(),
    // Every exchange by its id, once it is known what became of each reply.
    async exchanges() {
      for (;;) {
        const {rows} = await server.json('exchanges');
        if (rows.every((row) => row.delivery)) return rows.sort((a, b) => a.id - b.id);
      }
    },
    async set(name, value) {
      const response = await fetch(url + 'control/' + name, {method: 'POST', body: JSON.stringify(value)});
      if (!response.ok) throw new Error(await response.text());
    },
  };
  servers.add(server);
  return server;
}

// The exit status and the output of a program.
export async function run(program, args, options = {}) {
  const child = spawn(program, args, {stdio: ['ignore', 'pipe', 'pipe'], ...options});
  let out = '';
  child.stdout.on('data', (data) => { out += data; });
  child.stderr.on('data', (data) => { out += data; });
  const [status] = await once(child, 'exit');
  return {status, out};
}

export async function launchBrowser() {
  return chromium.launch({executablePath: CHROMIUM, headless: true, args: FLAGS});
}

// Gives the tests the page's own store, where the page has one.
export async function watchStore(page) {
  await page.evaluate(async () => { window.store = (await import('/store.js').catch(() => ({}))).store; });
}

// A page that notes what no page of ours may do: ask another host, break the policy, say anything on the console, fail.
// What a test provokes on purpose it allows by a pattern.
export async function openPage(browser, url, {allowed = [], ...options} = {}) {
  const context = await browser.newContext({viewport: {width: 1440, height: 900}, ...options});
  const page = await context.newPage();
  page.complaints = [];
  const note = (text) => allowed.some((pattern) => pattern.test(text)) || page.complaints.push(text);
  const origin = new URL(url).origin;
  page.on('console', (message) => note(`console: ${message.text()}`));
  page.on('pageerror', (error) => note(`error: ${error.message}`));
  page.on('request', (request) => {
    const from = request.url();
    if (!from.startsWith(origin) && !/^(data|blob|file):/.test(from)) note('asked ' + from);
  });
  await page.addInitScript(() => {
    document.addEventListener('securitypolicyviolation', (event) => console.error('policy: ' + event.violatedDirective + ' ' + event.blockedURI));
  });
  await page.goto(url);
  if (url.startsWith('http')) await watchStore(page);
  return page;
}

export const readText = (path) => readFileSync(path, 'utf8');
