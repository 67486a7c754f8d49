// For every reader: tools, the keyboard alone, twice the size.

import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {setTimeout as pause} from 'node:timers/promises';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {allViews, consoleTest, fillServer, hasRow} from './harness.js';

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
  await server.call(PATHS.risk, bodies.checkpoint('LOGIN', {user: bodies.user('eve')}, {user: 'eve'}));
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
  const {text} = await server.call(PATHS.risk, bodies.checkpoint('LOGIN', {user: bodies.user('eve')}, {user: 'eve'}));
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
  assert.ok(shown.height > 80 && shown.right <= 640, `${shown.height} px are left for a body, to ${shown.right} px`);
  for (const view of await allViews(server)) {
    await go('/' + view);
    await pause(100);
    const overflow = await page.evaluate(() => document.scrollingElement.scrollWidth - document.scrollingElement.clientWidth);
    assert.ok(overflow <= 0, `${view} is ${overflow} px too wide`);
  }
});
