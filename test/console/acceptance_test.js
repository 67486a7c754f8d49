// What the console promises, in a real browser against the real server. Each test has a server of its own.

import assert from 'node:assert/strict';
import http from 'node:http';
import {readFileSync, writeFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {after, before, test} from 'node:test';
import {setTimeout as pause} from 'node:timers/promises';
import * as world from './world.js';
import {PATHS} from './world.js';

const LONG = 8_000;  // only so that what never happens fails the test instead of stopping it
const MAX_WEIGHT = 200_000;

let browser;
before(async () => { browser = await world.launchBrowser(); });
after(() => browser?.close());

// Runs with a server and a page of the console, and checks at the end that the page did nothing that it may not.
function consoleTest(name, options, body) {
  test(name, {timeout: 120_000}, async (t) => {
    const server = await world.startServer(options.server);
    let page;
    try {
      page = await world.openPage(browser, server.console + (options.hash ?? ''), options.page);
      page.setDefaultTimeout(LONG);
      await body({t, server, page, go: (hash) => page.evaluate((to) => { location.hash = to; }, hash)});
      assert.deepEqual(page.complaints, []);
    } finally {
      await page?.context().close();
      await server.stop();
    }
  });
}

const hasRow = (page, id) => page.waitForSelector(`[data-id="${id}"]`);
const rowIds = (page) => page.evaluate(() => window.store.rows.map((row) => row.id));
const bodyText = (page) => page.$$eval('.bodyview .line:not(.ghost)', (lines) => lines.map((line) => line.querySelector('.text').textContent));
const idOf = async (server, path) => (await server.exchanges()).filter((row) => row.path === path).at(-1).id;

consoleTest('1 the demo is shown as it goes, call by call', {}, async ({t, server, page}) => {
  await page.evaluate(() => {
    window.seen = {};
    new MutationObserver(() => {
      for (const row of document.querySelectorAll('[data-id]')) window.seen[row.dataset.id] ??= Date.now();
    }).observe(document.body, {childList: true, subtree: true});
  });
  for (const journey of ['banking_day', 'payment_day']) {
    const {status, out} = await world.run(world.DEMO_HOST, [`${process.env.JOURNEYS}/${journey}.json`, '--server', server.url]);
    assert.equal(status, 0, out);
    assert.match(out, /calls that the server refused: 0/);
  }
  const rows = await server.exchanges();
  await page.waitForFunction((count) => Object.keys(window.seen).length === count, rows.length);
  const seen = await page.evaluate(() => window.seen);
  const late = rows.map((row) => seen[row.id] - row.time).sort((a, b) => a - b);
  const p95 = late[Math.ceil(late.length * 0.95) - 1];
  t.diagnostic(`log to row: median ${late[late.length >> 1]} ms, p95 ${p95} ms of ${late.length} calls`);
  assert.ok(p95 < 250, `p95 ${p95} ms`);
});

const VIEWS = ['live', 'problems', 'rules', 'faults', 's', 'bio', 'traces', 'export'];

async function fillServer(server) {
  await world.playSession(server);
  const bad = world.transaction();
  delete bad.keys.requestID;
  await server.call(PATHS.risk, bad);
  await server.call(PATHS.traces, world.traces(server.url));
  await server.set('faults', [{path: '*', status: 503, times: 1}]);
}

async function allViews(server) {
  return [...VIEWS, 'x/1', 'bio/' + await idOf(server, PATHS.bio), 'diff/1/2', 'nothing'];
}

consoleTest('2 no view asks another host, breaks the policy or complains; the page is light', {}, async ({t, server, page, go}) => {
  await fillServer(server);
  let weight = 0;
  const sizes = [];
  page.on('response', async (response) => {
    if (response.url().includes('/control/')) return;
    const length = Number(response.headers()['content-length'] ?? 0);
    weight += length;
    sizes.push(length);
  });
  const begin = Date.now();
  await page.reload();
  await hasRow(page, 1);
  t.diagnostic(`first row after ${Date.now() - begin} ms`);
  for (const view of await allViews(server)) {
    await go('/' + view);
    await page.waitForSelector('main > *');
    await pause(200);
  }
  t.diagnostic(`weight ${weight} bytes in ${sizes.length} files`);
  assert.ok(weight > 50_000 && weight < MAX_WEIGHT, `weight ${weight}`);
});

consoleTest('3 hostile bodies appear as they were sent, and do nothing', {}, async ({server, page, go}) => {
  const markup = '{"a":"<img src=x onerror=\\"window.hacked=1\\"><script>window.hacked=1</script>"}';
  const bidi = '{"a":"pay \u202eevil\u202c to \u2067x\u2069"}';
  const big = '{"id":9007199254740993,"id":-9223372036854775808,"n":1.10}';
  const deep = '['.repeat(128) + '"bottom"' + ']'.repeat(128);
  const line = '"' + 'x<b>'.repeat(262_144) + '"';
  for (const body of [markup, bidi, big, deep, line]) await server.call(PATHS.enrich, body);
  const flat = async () => (await bodyText(page)).join('');
  const open = async (id) => {
    await go('/x/' + id);
    await page.waitForFunction((n) => document.querySelector('.detail b')?.textContent === '#' + n && document.querySelector('.bodyview .line'), id);
  };
  await open(1);
  assert.equal((await flat()).replaceAll('": ', '":'), markup);
  await open(2);
  assert.ok((await flat()).includes('pay \u202eevil\u202c to \u2067x\u2069'));
  assert.equal(await page.$$eval('.odd', (marks) => marks.map((m) => m.dataset.code + getComputedStyle(m).unicodeBidi).join()),
               'U+202Eisolate,U+202Cisolate,U+2067isolate,U+2069isolate');
  await open(3);
  assert.equal((await flat()).replaceAll(': ', ':'), big);
  await open(4);
  await page.evaluate(() => { document.querySelector('.virtual.code').scrollTop = 1e9; });
  await page.waitForFunction(() => [...document.querySelectorAll('.line .text')].at(-1)?.textContent === ']');
  await page.evaluate(() => { document.querySelector('.virtual.code').scrollTop = 128 * 18 - 200; });
  await page.waitForFunction(() => [...document.querySelectorAll('.line .text')].some((l) => l.textContent === '"bottom"'));
  await open(5);
  const first = await flat();
  assert.ok(line.startsWith(first.slice(0, 20_000)) && first.length < 500_000, 'the beginning of the long line');
  await page.evaluate(() => { document.querySelector('.virtual.code').scrollTop = 1e9; });
  await page.waitForFunction(() => [...document.querySelectorAll('.line .text')].at(-1)?.textContent === '>"');
  assert.ok(line.endsWith((await flat()).slice(-10_000)), 'the end of the long line');
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  assert.equal(await page.$$eval('main img, main script', (found) => found.length), 0);
});

consoleTest('4 a missing and a wrong key are both marked at their place', {}, async ({server, page, go}) => {
  const body = world.transaction();
  delete body.keys.requestID;
  body.TRANSACTION.amount = '12';
  await server.call(PATHS.risk, body);
  await go('/x/1');
  await page.waitForSelector('.line.marked');
  const shownLines = () => page.$$eval('.bodyview .line', (all) => all.map((line) => ({
    text: line.querySelector('.text').textContent, ghost: line.classList.contains('ghost'), marked: line.classList.contains('marked'),
    current: line.classList.contains('current'), why: line.querySelector('.why')?.textContent})));
  const lines = await shownLines();
  const ghost = lines.findIndex((line) => line.ghost);
  assert.equal(lines[ghost - 1].text, '"keys": {');
  assert.equal(lines[ghost].text, '"requestID" missing');
  assert.ok(lines[ghost].current, 'the first one is shown at once');
  await page.keyboard.press('F8');
  await page.waitForFunction(() => document.querySelector('.line.current .text')?.textContent.startsWith('"amount"'));
  const wrong = (await shownLines()).filter((line) => line.marked && !line.ghost);
  assert.deepEqual(wrong.map((line) => [line.text, line.why]), [['"amount": "12",', 'expected a number, got "12"']]);
  await go('/problems');
  assert.deepEqual(await page.$$eval('tbody code', (cells) => cells.map((cell) => cell.textContent).sort()), ['TRANSACTION.amount', 'keys.requestID']);
});

consoleTest('5 faults by a click: two verdicts are lost, the third is there', {}, async ({server, page, go}) => {
  await server.call(PATHS.risk, world.checkpoint('LAUNCH'));
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
  await page.click('.presets button:has-text("restart")');
  await page.waitForSelector('.banner.bad:has-text("down")');
  await page.waitForFunction(() => !document.querySelector('.banner'));
  assert.equal((await server.call(PATHS.enrich, world.common())).status, 200);
});

// The browser itself notes the refusal of the bad rule.
consoleTest('6 a bad rule is told in the server\'s words; the replay tells what happens', {hash: '#/rules', page: {allowed: [/status of 400/]}}, async ({server, page, go}) => {
  const calls = [world.checkpoint('LAUNCH'), world.transaction(5), world.transaction(5000), world.transaction(7, {user: 'eve'})];
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

consoleTest('7 no page of another origin reaches the control path, curl does', {page: {allowed: [/./]}}, async ({server, page}) => {
  const stranger = http.createServer((request, response) => response.setHeader('Content-Type', 'text/html').end('<p>other'));
  await new Promise((resolve) => stranger.listen(0, '127.0.0.1', resolve));
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
  stranger.close();
});

// Sends calls at a rate over kept connections.
async function load(server, count, perSecond) {
  const agent = new http.Agent({keepAlive: true, maxSockets: 8});
  const body = JSON.stringify(world.common());
  const {hostname, port} = new URL(server.url);
  const one = () => new Promise((resolve, reject) => {
    http.request({agent, hostname, port, method: 'POST', path: PATHS.enrich, headers: {'Content-Type': world.CONTENT_TYPE, 'Content-Length': body.length}},
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

consoleTest('8 ten thousand calls at 500 a second, eight tabs, none is lost', {}, async ({t, server, page}) => {
  await page.evaluate(() => {
    window.longest = 0;
    new PerformanceObserver((list) => {
      for (const task of list.getEntries()) window.longest = Math.max(window.longest, task.duration);
    }).observe({entryTypes: ['longtask']});
  });
  const tabs = [page];
  for (let i = 1; i < 7; i += 1) {
    const tab = await page.context().newPage();
    await tab.goto(server.console);
    await world.watchStore(tab);
    tabs.push(tab);
  }
  const loading = load(server, 10_000, 500);
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
  const took = await loading;
  assert.ok(took < 40_000, `${took} ms`);
  for (const tab of tabs) {
    await tab.waitForFunction(() => document.querySelector('.count')?.textContent === '10000 of 10000');
    const ids = await rowIds(tab);
    assert.deepEqual([ids.length, ids[0], ids.at(-1), new Set(ids).size], [10_000, 1, 10_000, 10_000]);
  }
  const inDocument = await page.$$eval('[data-id]', (rows) => rows.length);
  const longest = await page.evaluate(() => window.longest);
  t.diagnostic(`${inDocument} rows in the document, longest task ${longest} ms, 10 000 calls in ${took} ms`);
  assert.ok(inDocument < 60, `${inDocument} rows`);
  assert.ok(longest < 200, `${longest} ms`);
});

consoleTest('9 biometrics: what is plotted is what was sent', {}, async ({server, page, go}) => {
  await server.call(PATHS.session, world.sessionData());
  const plots = () => page.$$eval('.motion .uplotbox', (boxes) => boxes.map((box) => box.plot.data.map((axis) => [...axis])));
  for (const columns of [9, 12]) {
    const body = world.biometrics({columns});
    await server.call(PATHS.bio, body);
    await go('/bio/' + await idOf(server, PATHS.bio));
    await page.waitForFunction((n) => document.querySelectorAll('.motion .uplotbox').length === n, columns / 3 + 1);
    const {sensorsData, sensorsTS} = body.bio_sensor_event_data;
    const shown = await plots();
    for (let group = 0; group < columns / 3; group += 1) {
      const whole = shown[group][0].map((time, index) => [time, ...shown[group].slice(1).map((axis) => axis[index])]).filter((row) => row[1] !== null);
      assert.deepEqual(whole, sensorsData.map((row, index) => [sensorsTS[index][0] - sensorsTS[0][0], ...row.slice(group * 3, group * 3 + 3)]));
      assert.ok(shown[group][1].includes(null), 'the line is broken between the presses');
    }
    assert.equal(await page.$$eval('.warnbar', (bars) => bars.length), 0);
    assert.equal(await page.$$eval('.touch .press circle:not(.begin)', (dots) => dots.length), 50);
    assert.match(await page.textContent('.bio'), /Touches on 390 \u00d7 844 points/);
  }
  await server.call(PATHS.bio, world.biometrics({without: ['times', 'end'], identity: {session: 'another'}}));
  await go('/bio/' + await idOf(server, PATHS.bio));
  await page.waitForSelector('.warnbar');
  const bars = await page.$$eval('.warnbar', (all) => all.map((bar) => bar.textContent));
  assert.match(bars[0], /^49 touch rows, but 45 time rows/);
  assert.match(bars[1], /cancelled/);
  assert.equal(await page.$$eval('.press.cancelled', (found) => found.length), 1);
  assert.equal(await page.$$eval('.touch text', (tags) => tags.length), 0, 'no view is guessed');
  assert.match(await page.textContent('.bio'), /size of the screen unknown/);
});

consoleTest('10 traces: spans, without length, open, ambiguous, appended', {}, async ({server, page, go}) => {
  await server.call(PATHS.risk, world.checkpoint('LOGIN', {user: world.user()}));
  const [{id, received}] = await server.exchanges();
  await server.call(PATHS.traces, world.traces(server.url, received - 2));
  await go('/traces');
  await page.waitForSelector('.waterfall .span');
  assert.match(await page.textContent('.traces h1'), /6 spans, 2 pins/);
  const states = await page.$$eval('.spans tbody tr:not(:has(.pinrow))', (rows) => rows.map((row) => [1, 3, 4].map((at) => row.children[at].firstChild?.textContent ?? '')));
  assert.deepEqual(states, [['getRiskForCheckPoint', '5 ms', 'closed, 1 appended'], ['configureUserId', '<1 ms', 'closed'], ['requestFromServer', '7 ms', 'closed'],
                            ['logout()', 'open', 'open'], ['upload', '4 ms', 'ambiguous'], ['upload', '2 ms', 'ambiguous']]);
  const drawn = await page.$$eval('.waterfall .span', (spans) => spans.map((span) => [span.getAttribute('class').trim(), span.querySelector('rect').style.fill]));
  assert.equal(drawn.filter(([kind]) => kind.includes('instant')).length, 1);
  assert.equal(drawn.filter(([, fill]) => fill.includes('hatch')).length, 3, 'open and ambiguous ones are hatched');
  assert.equal(await page.$$eval('.middle', (marks) => marks.length), 1);
  assert.equal(await page.$$eval('.pin', (pins) => pins.length), 2);
  assert.equal(await page.textContent('.spans a'), 'probably #' + id);
});

consoleTest('11 a copied command sends the same bytes', {}, async ({server, page}) => {
  await page.context().grantPermissions(['clipboard-read', 'clipboard-write']);
  const folder = world.temporaryFolder();
  const bodies = ['{"a":"it\'s $HOME `id` \\\\ \\"q\\" \u00e9\u202e"}', '@/etc/hostname', '', 'line\nline\r\n', Uint8Array.of(0, 255, 10), JSON.stringify({long: 'x'.repeat(120_000)})];
  for (const body of bodies) await server.call(PATHS.enrich, body);
  await server.call('/a//b/../c?d=[1]', '{}', {contentType: 'text/odd; x="y"'});
  for (let id = 1; id <= bodies.length + 1; id += 1) {
    await hasRow(page, id).then((row) => row.click());
    const isFile = id === 5 || id === 6;
    const downloaded = isFile ? page.waitForEvent('download') : null;
    await page.evaluate(() => navigator.clipboard.writeText(''));
    await page.click('.detail button:text-is("curl")');
    await page.waitForFunction(async () => (await navigator.clipboard.readText()).startsWith('curl'));
    if (isFile) {
      const file = await downloaded;
      await file.saveAs(folder.file(file.suggestedFilename()));
    }
    const command = await page.evaluate(() => navigator.clipboard.readText());
    const {status, out} = await world.run('sh', ['-c', command], {cwd: folder.path});
    assert.equal(status, 0, command.slice(0, 200) + out);
    const rows = await server.exchanges();
    const again = rows.at(-1);
    const original = rows.find((row) => row.id === id);
    assert.deepEqual([again.path, again.contentType, again.requestSize], [original.path, original.contentType, original.requestSize]);
    const bytes = async (n) => Buffer.from(await (await server.control(`exchanges/${n}/request`)).arrayBuffer());
    assert.ok((await bytes(again.id)).equals(await bytes(id)), 'body ' + id);
  }
  folder.remove();
});

const PERSONAL = ['noor', 'Haddad', 'Lisbon', 'Porto', 'example.com', '15550100', 'tok_4242', 'Harbour', '38.7223', '9.1393', world.SESSION.slice(0, 36), 'device-8a76', 'Corner Shop',
                  'tx-1001', "Noor's phone", '12.5'];

consoleTest('12 exports come back as they were, and hold nothing personal unless asked', {}, async ({server, page, go}) => {
  const folder = world.temporaryFolder();
  await fillServer(server);
  await server.call(PATHS.enrich, '{"keys":1,"keys":9007199254740993}');
  await server.set('rules', [{risk: 'HIGH'}]);
  const rows = await server.exchanges();
  await hasRow(page, rows.at(-1).id);
  const exported = async (format, plain) => {
    await go('/export');
    await page.check(`label:has-text("${format === 'har' ? 'HAR' : 'JSON lines'}") input`);
    await page.setChecked('label:has-text("keep it") input', plain);
    const [file] = await Promise.all([page.waitForEvent('download'), page.click('button.primary')]);
    const path = folder.file(`${plain}.${format}`);
    await file.saveAs(path);
    return path;
  };
  const facts = (list) => list.map((row) => ({...row, id: undefined, violations: row.violations?.length}));
  for (const format of ['jsonl', 'har']) {
    const masked = world.readText(await exported(format, false));
    for (const personal of PERSONAL) assert.ok(!masked.includes(personal), `${format} holds ${personal}`);
    assert.ok(!masked.includes(encodeURIComponent('noor')) && masked.includes('"risk":'));
    const path = await exported(format, true);
    assert.ok(world.readText(path).includes('noor'));
    await page.setInputFiles('input[type=file]', path);
    await page.waitForFunction(() => document.body.textContent.includes('was imported and is read-only'));
    const entries = await page.evaluate(() => [...window.store.capture.entries.values()]);
    assert.deepEqual(facts(entries.map((entry) => entry.row)), facts(rows));
    for (const entry of entries) {
      assert.equal(entry.request, await (await server.control(`exchanges/${entry.row.id}/request`)).text());
      assert.equal(entry.reply, await (await server.control(`exchanges/${entry.row.id}/reply`)).text());
    }
    await page.click('.banner button');
  }
  folder.remove();
});

test('13 the report stands by itself: every view, masked, from a file', {timeout: 120_000}, async () => {
  const folder = world.temporaryFolder();
  const server = await world.startServer(['--log', folder.file('calls.jsonl')]);
  await fillServer(server);
  await server.call(PATHS.enrich, '{"x":"</script><b id=hacked>"}');
  const views = await allViews(server);
  await server.stop();
  const made = await world.run(world.RISK_SERVER, ['--report-from', folder.file('calls.jsonl'), folder.file('out.html')]);
  assert.equal(made.status, 0, made.out);
  const text = world.readText(folder.file('out.html'));
  for (const personal of PERSONAL.filter((word) => word !== '12.5')) assert.ok(!text.includes(personal), personal);
  const url = 'file://' + folder.file('out.html');
  const page = await world.openPage(browser, url);
  for (const view of views) {
    await page.goto(url + '#/' + view);
    await page.waitForSelector('main > *');
    if (view === 'live') await hasRow(page, 1);
    if (view.startsWith('bio/')) await page.waitForSelector('.motion .uplotbox canvas');
    if (view === 'traces') await page.waitForSelector('.span');
    if (view === 's') await page.waitForSelector('.lanes a');
    if (view === 'x/1') await page.waitForSelector('.bodyview .line');
    if (view === 'diff/1/2') await page.waitForSelector('.diff tbody tr');
  }
  assert.equal(await page.$('#hacked'), null);
  assert.match(await page.textContent('.top'), /masked/);
  assert.deepEqual(page.complaints, []);
  const plain = await world.run(world.RISK_SERVER, ['--report-from', folder.file('calls.jsonl'), folder.file('plain.html'), '--plain']);
  assert.equal(plain.status, 0);
  assert.ok(world.readText(folder.file('plain.html')).includes('Haddad'));
  await page.context().close();
  folder.remove();
});

const axeSource = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

async function seriousFaults(page) {
  await page.evaluate(axeSource);
  return page.evaluate(async () => {
    const {violations} = await window.axe.run(document, {resultTypes: ['violations']});
    return violations.filter((v) => v.impact === 'serious' || v.impact === 'critical').map((v) => `${v.id}: ${v.nodes[0].html.slice(0, 160)} ${v.nodes[0].failureSummary ?? ''}`);
  });
}

for (const colorScheme of ['light', 'dark']) {
  consoleTest(`14 accessible to tools, ${colorScheme}`, {page: {colorScheme}}, async ({server, page, go}) => {
    await fillServer(server);
    await hasRow(page, 11).then((row) => row.click());
    for (const view of await allViews(server)) {
      await go('/' + view);
      await page.waitForSelector('main > *');
      await pause(150);
      assert.deepEqual(await seriousFaults(page), [], view);
    }
    await page.keyboard.press('?');
    await page.waitForSelector('.help');
    assert.deepEqual(await seriousFaults(page), []);
  });
}

// Presses Tab until the focus is on what is asked for.
async function tabTo(page, selector) {
  for (let i = 0; i < 200; i += 1) {
    if (await page.evaluate((wanted) => document.activeElement?.matches(wanted), selector)) return;
    await page.keyboard.press('Tab');
  }
  assert.fail('Tab does not reach ' + selector);
}

consoleTest('14 a verdict is scripted by the keyboard alone', {}, async ({server, page}) => {
  await server.call(PATHS.risk, world.checkpoint('LOGIN', {user: world.user('eve')}, {user: 'eve'}));
  await hasRow(page, 1);
  await page.keyboard.press('j');
  await page.waitForSelector('.row.selected');
  await page.evaluate(() => [...document.querySelectorAll('.detail button')].find((b) => b.textContent === 'rule').setAttribute('data-wanted', ''));
  await tabTo(page, '[data-wanted]');
  await page.keyboard.press('Enter');
  await page.waitForSelector('.replay');
  await page.waitForFunction(() => !document.querySelector('button.primary').disabled);
  await tabTo(page, 'button.primary');
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => document.querySelector('.toast')?.textContent.includes('in force'));
  const {text} = await server.call(PATHS.risk, world.checkpoint('LOGIN', {user: world.user('eve')}, {user: 'eve'}));
  assert.equal(JSON.parse(text).risk, 1);
  await page.keyboard.press('/');
  await page.waitForFunction(() => document.activeElement?.id === 'filter');
  await page.keyboard.type('risk>=MEDIUM');
  await page.waitForFunction(() => document.querySelector('.count').textContent === '1 of 2');
  await page.keyboard.press('Escape');
  await page.keyboard.press('k');
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => location.hash === '#/x/2');
});

consoleTest('14 usable at 200 percent', {page: {viewport: {width: 640, height: 450}, deviceScaleFactor: 2}}, async ({server, page, go}) => {
  await fillServer(server);
  await hasRow(page, 12).then((row) => row.click());
  await page.waitForSelector('.detail .bodyview .line');
  for (const selector of ['#filter', '[data-id="12"]', '.detail [role=tab]', 'nav a:text-is("Rules")', 'button:text-is("mask")']) {
    const box = await (await page.waitForSelector(selector)).boundingBox();
    assert.ok(box && box.x >= 0 && box.x + box.width <= 640 && box.height > 10, selector);
  }
  const shown = await page.$eval('.detail .panel', (panel) => panel.getBoundingClientRect());
  assert.ok(shown.height > 80, `${shown.height} px are left for a body`);
  for (const view of await allViews(server)) {
    await go('/' + view);
    await pause(100);
    const overflow = await page.evaluate(() => document.scrollingElement.scrollWidth - document.scrollingElement.clientWidth);
    assert.ok(overflow <= 0, `${view} is ${overflow} px too wide`);
  }
});

// Between page and server; cuts every stream of events after some bytes, wherever that is.
async function cuttingProxy(target) {
  const {hostname, port} = new URL(target);
  const host = `${hostname}:${port}`;
  const proxy = http.createServer((request, response) => {
    const headers = {...request.headers, host};
    if (headers.origin) headers.origin = 'http://' + host;
    const forward = http.request({hostname, port, method: request.method, path: request.url, headers}, (answer) => {
      response.writeHead(answer.statusCode, answer.headers);
      const isStream = request.url.startsWith('/control/events');
      let left = proxy.cut;
      answer.on('data', (bytes) => {
        if (!isStream || bytes.length < left) {
          left -= isStream ? bytes.length : 0;
          response.write(bytes);
          return;
        }
        proxy.cuts += 1;
        response.write(bytes.subarray(0, left), () => response.destroy());
        answer.destroy();
      });
      answer.on('end', () => response.end());
      answer.on('error', () => response.destroy());
    });
    forward.on('error', () => response.destroy());
    response.on('close', () => forward.destroy());
    request.pipe(forward);
  });
  Object.assign(proxy, {cut: 3000, cuts: 0});
  await new Promise((resolve) => proxy.listen(0, '127.0.0.1', resolve));
  proxy.url = `http://127.0.0.1:${proxy.address().port}/`;
  return proxy;
}

test('15 a stream that is cut in the middle of a batch loses and doubles nothing', {timeout: 120_000}, async (t) => {
  const server = await world.startServer();
  const proxy = await cuttingProxy(server.console);
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
  for (let i = 0; i < 12; i += 1) {
    proxy.cut = 900 + i * 517;
    await load(server, 25, 400);
  }
  await page.waitForFunction(() => window.store.rows.length === 300);
  await page.waitForFunction(() => window.store.rows.every((row) => row.delivery));
  const ids = await rowIds(page);
  assert.deepEqual(ids, Array.from({length: 300}, (_, index) => index + 1));
  assert.deepEqual(await page.evaluate(() => window.puts), {}, 'no row came again');
  assert.equal(await page.evaluate(() => window.store.lost), 0);
  t.diagnostic(`${proxy.cuts} cuts`);
  assert.ok(proxy.cuts >= 5, `${proxy.cuts} cuts`);
  await page.context().close();
  proxy.closeAllConnections();
  proxy.close();
  await server.stop();
});
