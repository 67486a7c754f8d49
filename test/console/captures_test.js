// What leaves the page: commands, exports, reports.

import assert from 'node:assert/strict';
import {test} from 'node:test';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {allViews, browser, consoleTest, fillServer, hasRow} from './harness.js';
import * as world from './world.js';

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

const PERSONAL = ['noor', 'Haddad', 'Lisbon', 'Porto', 'example.com', '15550100', 'tok_4242', 'Harbour', '38.7223', '9.1393', bodies.SESSION.slice(0, 36), 'device-8a76', 'Corner Shop',
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
  await page.goto('file://' + folder.file('plain.html'));
  await hasRow(page, 1);
  assert.equal(await page.$('#hacked'), null);
  await page.context().close();
  folder.remove();
});
