// Makes the pictures of docs/console.md from a journey of the demo: node pictures.js FOLDER

import {join} from 'node:path';
import {DEMO_HOST, launchBrowser, openPage, run, startServer} from './world.js';

const JOURNEY = 'banking_day';
const SIZE = {width: 1120, height: 600};

// The live calls with that of the highest verdict beside them, and a session.
const PICTURES = [['light', 'live'], ['dark', 'session']];

async function show(page, view) {
  await page.waitForSelector('[data-id]');
  await page.evaluate((isSession) => {
    const {rows} = window.store;
    if (isSession) location.hash = '#/s/' + rows[0].facts.session;
    else window.store.set({selected: [...rows].sort((a, b) => (b.risk ?? -9) - (a.risk ?? -9))[0].id});
  }, view === 'session');
  await page.waitForSelector(view === 'session' ? '.lanes' : '.detail .bodyview .line');
  await page.evaluate(() => document.fonts.ready);
}

const server = await startServer();
const browser = await launchBrowser();
try {
  const {status, out} = await run(DEMO_HOST, [`${process.env.JOURNEYS}/${JOURNEY}.json`, '--server', server.url]);
  if (status !== 0) throw new Error(out);
  for (const [colorScheme, view] of PICTURES) {
    const page = await openPage(browser, server.console, {colorScheme, viewport: SIZE});
    await show(page, view);
    await page.screenshot({path: join(process.argv[2], `console_${colorScheme}.png`), animations: 'disabled'});
    await page.context().close();
  }
} finally {
  await browser.close();
  await server.stop();
}
