// Faults and rules by a click, and who may set them.

import assert from 'node:assert/strict';
import http from 'node:http';
import {writeFileSync} from 'node:fs';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {browser, consoleTest} from './harness.js';
import * as world from './world.js';

consoleTest('5 faults by a click: two verdicts are lost, the third is there', {}, async ({server, page, go}) => {
  await server.call(PATHS.risk, bodies.checkpoint('LAUNCH'));
  await go('/faults');
  await page.selectOption('select[aria-label=path]', PATHS.risk);
  await page.click('.presets button:text-is("503")');
  await page.waitForSelector('.struck');
  await page.click('.presets button:text-is("503")');
  await page.waitForFunction(() => document.querySelector('.banner')?.textContent.includes('times 2'));
  const folder = world.temporaryFolder();
  const steps = ['undefined', 'undefined', 'LOW'].map((expect) => ({checkpoint: {checkpoint_type: 'LAUNCH'}, expect}));
  writeFileSync(folder.file('journey.json'), JSON.stringify({title: 'two lost verdicts', setup: {user: 'noor'}, steps}));
  const {status, out} = await world.run(world.DEMO_HOST, [folder.file('journey.json'), '--server', server.url]);
  folder.remove();
  assert.equal(status, 0, out);
  await page.waitForFunction(() => document.querySelector('.struck')?.textContent === '2');
  await page.click('button:text-is("Clear all")');
  await page.waitForFunction(() => !document.querySelector('.banner'));
  assert.deepEqual(await server.json('faults'), []);
  // Down for longer than the preset says: a machine that pauses would show none of it.
  await page.route('**/control/restart', (route) => route.continue({postData: '{"downMs":10000}'}));
  await page.click('.presets button:has-text("restart")');
  await page.waitForSelector('.banner.bad:has-text("down")');
  await page.waitForFunction(() => !document.querySelector('.banner'));
  assert.equal((await server.call(PATHS.enrich, bodies.common())).status, 200);
});

// The browser itself notes the refusal of the bad rule.
consoleTest('6 a bad rule is told in the server\'s words; the replay tells what happens', {hash: '#/rules', page: {allowed: [/status of 400/]}}, async ({server, page, go}) => {
  const calls = [bodies.checkpoint('LAUNCH'), bodies.transaction(5), bodies.transaction(5000), bodies.transaction(7, {user: 'eve'})];
  const play = async () => {
    const risks = [];
    for (const call of calls) risks.push(JSON.parse((await server.call(PATHS.risk, call)).text).risk);
    return risks;
  };
  const before = await play();
  await page.click('text=Add a rule in front');
  await page.selectOption('select[aria-label="Further condition of rule 1"]', 'amountAtLeast');
  const field = page.locator('ol.rules li').first().locator('input');
  await field.fill('much');
  await page.waitForSelector('.fieldfault');
  const reply = await server.control('rules/check', {method: 'POST', body: '[{"amountAtLeast":"much","risk":"LOW"}]'});
  assert.equal('[0].amountAtLeast: ' + await page.textContent('.fieldfault'), (await reply.json()).error);
  assert.ok(await page.isDisabled('button.primary'));
  await field.fill('1000');
  await page.selectOption('select[aria-label="Risk of rule 1"]', 'VERY_HIGH');
  await page.waitForSelector('.replay');
  await page.click('ol.rules li:last-child button[aria-label^="Remove"]');
  await page.waitForFunction(() => document.body.textContent.includes('replay over the last 4 verdicts: 1 would change'));
  await page.click('button.primary');
  await page.waitForFunction(() => document.querySelector('.toast')?.textContent.includes('in force'));
  const after = await play();
  assert.equal(after.filter((risk, index) => risk !== before[index]).length, 1);
  assert.equal(after[2], 3);
  await server.set('rules', [{risk: 'LOW'}]);
  await page.waitForSelector('.warnbar:has-text("changed by someone else")');
  await go('/live');
});

// A request with any headers: fetch() would not send these.
function rawRequest(url, {method = 'POST', headers = {}, body = '[{"path":"*","hang":true}]'}) {
  return new Promise((resolve, reject) => {
    const {hostname, port} = new URL(url);
    const request = http.request({hostname, port, method, path: url.slice(url.indexOf('/', 8)), headers: {'Content-Length': Buffer.byteLength(body), ...headers}},
                                 (response) => response.resume().on('end', () => resolve(response.statusCode)));
    request.on('error', reject).end(body);
  });
}

consoleTest('7 no page of another origin reaches the control path, curl does', {page: {allowed: [/./]}}, async ({t, server, page}) => {
  const stranger = http.createServer((request, response) => response.setHeader('Content-Type', 'text/html').end('<p>other'));
  await new Promise((resolve) => stranger.listen(0, '127.0.0.1', resolve));
  t.after(() => stranger.close());
  const strangerUrl = `http://127.0.0.1:${stranger.address().port}/`;
  for (const base of [server.url, server.console]) {
    const host = base.slice(7, -1);
    const refused = [{Host: 'evil.example'}, {Host: host, Origin: 'http://evil.example'}, {Host: host, Origin: 'null'},
                     {Host: host, Origin: strangerUrl.slice(0, -1)}, {Host: host, 'Sec-Fetch-Site': 'cross-site'}];
    for (const headers of refused) assert.equal(await rawRequest(base + 'control/faults', {headers}), 403, JSON.stringify(headers));
    for (const path of ['control%2ffaults', 'control/%66aults', '/control/faults']) {
      assert.equal(await rawRequest(base + path, {headers: {Host: host}}), 403, path);
    }
    await page.goto(strangerUrl);
    const outcome = await page.evaluate(async (url) => {
      const attempts = [fetch(url + 'control/faults', {method: 'POST', mode: 'no-cors', body: '[{"path":"*","hang":true}]'}).then((r) => r.type, () => 'failed'),
                        fetch(url + 'control/faults').then(() => 'read', () => 'failed')];
      return Promise.all(attempts);
    }, base);
    assert.deepEqual(outcome, ['opaque', 'failed']);
    assert.deepEqual(await server.json('faults'), []);
    const {status} = await world.run('curl', ['-sS', '--fail', '-d', '[{"path": "*", "status": 503, "times": 2}]', base + 'control/faults']);
    assert.equal(status, 0);
    assert.equal((await server.json('faults')).length, 1);
    await server.set('faults', []);
  }
});
