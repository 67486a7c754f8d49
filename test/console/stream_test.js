// Rows as they come: many, in many tabs, over a stream that breaks.

import assert from 'node:assert/strict';
import http from 'node:http';
import {test} from 'node:test';
import {setTimeout as pause} from 'node:timers/promises';
import {browser, consoleTest, load, rowIds} from './harness.js';
import * as world from './world.js';

// The longest task of any tab in milliseconds of its thread, so that what else runs on the machine does not count.
function longestTask({traceEvents}) {
  const tabs = new Set(traceEvents.filter(({name, args}) => name === 'thread_name' && args.name === 'CrRendererMain').map(({pid, tid}) => `${pid} ${tid}`));
  const tasks = traceEvents.filter(({name, pid, tid}) => name === 'RunTask' && tabs.has(`${pid} ${tid}`));
  assert.ok(tasks.length > 1000, `${tasks.length} tasks were traced`);
  return Math.max(...tasks.map(({tdur = 0}) => tdur / 1000));
}

consoleTest('8 ten thousand calls at 500 a second, eight tabs, none is lost', {}, async ({t, server, page}) => {
  const tabs = [page];
  for (let i = 1; i < 7; i += 1) {
    const tab = await page.context().newPage();
    await tab.goto(server.console);
    await world.watchStore(tab);
    tabs.push(tab);
  }
  const loading = load(server, 10_000, 500);
  await pause(5000);
  await browser.startTracing(page, {categories: ['disabled-by-default-devtools.timeline']});
  await page.waitForFunction(() => document.querySelectorAll('[data-id]').length > 20);
  await page.keyboard.press('Space');
  await page.waitForSelector('.status.paused');
  const eighth = await page.context().newPage();
  await eighth.goto(server.console);
  await world.watchStore(eighth);
  tabs.push(eighth);
  await pause(2000);
  await page.keyboard.press('Space');
  await page.waitForSelector('.status.live');
  await pause(2000);
  const trace = JSON.parse(await browser.stopTracing());
  const took = await loading;
  assert.ok(took < 40_000, `${took} ms`);
  for (const tab of tabs) {
    await tab.waitForFunction(() => document.querySelector('.count')?.textContent === '10000 of 10000');
    const ids = await rowIds(tab);
    assert.deepEqual([ids.length, ids[0], ids.at(-1), new Set(ids).size], [10_000, 1, 10_000, 10_000]);
  }
  const inDocument = await page.$$eval('[data-id]', (rows) => rows.length);
  const longest = longestTask(trace);
  t.diagnostic(`${inDocument} rows in the document, longest task ${longest} ms, 10 000 calls in ${took} ms`);
  assert.ok(inDocument < 60, `${inDocument} rows`);
  assert.ok(longest < 200, `${longest} ms`);
});

// Between page and server; cuts each stream of events in the middle of its second, third or fourth piece.
async function cuttingProxy(target) {
  const {hostname, port} = new URL(target);
  const host = `${hostname}:${port}`;
  const proxy = http.createServer((request, response) => {
    const headers = {...request.headers, host};
    if (headers.origin) headers.origin = 'http://' + host;
    const forward = http.request({hostname, port, method: request.method, path: request.url, headers}, (answer) => {
      response.writeHead(answer.statusCode, answer.headers);
      let wholePieces = request.url.startsWith('/control/events') ? 1 + proxy.cuts % 3 : Infinity;
      answer.on('data', (bytes) => {
        wholePieces -= 1;
        if (wholePieces >= 0) return response.write(bytes);
        proxy.cuts += 1;
        response.write(bytes.subarray(0, Math.ceil(bytes.length * (proxy.cuts % 4 + 1) / 6)), () => response.destroy());
        return answer.destroy();
      });
      answer.on('end', () => response.end());
      answer.on('error', () => response.destroy());
    });
    forward.on('error', () => response.destroy());
    response.on('close', () => forward.destroy());
    request.pipe(forward);
  });
  proxy.cuts = 0;
  await new Promise((resolve) => proxy.listen(0, '127.0.0.1', resolve));
  proxy.url = `http://127.0.0.1:${proxy.address().port}/`;
  return proxy;
}

test('15 a stream that is cut in the middle of a batch loses and doubles nothing', {timeout: 120_000}, async (t) => {
  const server = await world.startServer();
  const proxy = await cuttingProxy(server.console);
  t.after(() => {
    proxy.close();
    proxy.closeAllConnections();
  });
  const page = await world.openPage(browser, proxy.url, {allowed: [/ERR_INCOMPLETE_CHUNKED|ERR_CONNECTION|Failed to load/]});
  await page.evaluate(() => {
    const {store} = window;
    window.puts = {};
    const put = store.put.bind(store);
    store.put = (row) => {
      // Twice a row comes by right: when it is decided and when its reply is out.
      if (store.index.get(row.id)?.delivery) window.puts[row.id] = (window.puts[row.id] ?? 0) + 1;
      put(row);
    };
  });
  let count = 300;
  await load(server, count, 60);
  for (; proxy.cuts < 5; count += 30) await load(server, 30, 60);  // a machine that pauses joins pieces
  await page.waitForFunction((wanted) => window.store.rows.length === wanted, count);
  await page.waitForFunction(() => window.store.rows.every((row) => row.delivery));
  const ids = await rowIds(page);
  assert.deepEqual(ids, Array.from({length: count}, (_, index) => index + 1));
  assert.deepEqual(await page.evaluate(() => window.puts), {}, 'no row came again');
  assert.equal(await page.evaluate(() => window.store.lost), 0);
  t.diagnostic(`${proxy.cuts} cuts`);
  assert.ok(proxy.cuts >= 5, `${proxy.cuts} cuts`);
  await page.context().close();
  await server.stop();
});
