// What is plotted is what was sent.

import assert from 'node:assert/strict';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {consoleTest, idOf} from './harness.js';
import {DEMO_HOST, run} from './world.js';

// Each group of three axes shows the rows that were sent, and nothing else; returns what is shown.
async function assertPlotted(page, body) {
  const {sensorsData, sensorsTS, sensorHeader} = body.bio_sensor_event_data;
  const groups = (sensorsData[0] ?? sensorHeader).length / 3;
  await page.waitForFunction((n) => document.querySelectorAll('.motion .uplotbox').length === n, groups + 1);
  const shown = await page.$$eval('.motion .uplotbox', (boxes) => boxes.map((box) => box.plot.data.map((axis) => [...axis])));
  for (let group = 0; group < groups; group += 1) {
    const whole = shown[group][0].map((time, index) => [time, ...shown[group].slice(1).map((axis) => axis[index])]).filter((row) => row[1] !== null);
    assert.deepEqual(whole, sensorsData.map((row, index) => [sensorsTS[index][0] - sensorsTS[0][0], ...row.slice(group * 3, group * 3 + 3)]));
  }
  return shown.slice(0, groups);
}

consoleTest('9 biometrics: what is plotted is what was sent', {}, async ({server, page, go}) => {
  await server.call(PATHS.session, bodies.sessionData());
  for (const columns of [9, 12]) {
    const body = bodies.biometrics({columns});
    await server.call(PATHS.bio, body);
    await go('/bio/' + await idOf(server, PATHS.bio));
    for (const axes of await assertPlotted(page, body)) assert.ok(axes[1].includes(null), 'the line is broken between the presses');
    assert.equal(await page.$$eval('.warnbar', (bars) => bars.length), 0);
    assert.equal(await page.$$eval('.touch .press circle:not(.begin)', (dots) => dots.length), 50);
    assert.match(await page.textContent('.bio'), /Touches on 390 \u00d7 844 points/);
  }
  await server.call(PATHS.bio, bodies.biometrics({without: ['times', 'end'], identity: {session: 'another'}}));
  await go('/bio/' + await idOf(server, PATHS.bio));
  await page.waitForSelector('.warnbar');
  const bars = await page.$$eval('.warnbar', (all) => all.map((bar) => bar.textContent));
  assert.match(bars[0], /^49 touch rows, but 45 time rows/);
  assert.match(bars[1], /cancelled/);
  assert.equal(await page.$$eval('.press.cancelled', (found) => found.length), 1);
  assert.equal(await page.$$eval('.touch text', (tags) => tags.length), 0, 'no view is guessed');
  assert.match(await page.textContent('.bio'), /size of the screen unknown/);
  await page.click('.plot:has(.touch) button');
  const untimed = await page.$$eval('.plot:has(.touch) tbody tr', (rows) => rows.map((row) => row.firstChild.textContent + row.lastChild.textContent));
  assert.deepEqual(untimed, Array(49).fill(''), 'no time is guessed');
});

consoleTest('9 biometrics: so are the screens of the shipped journeys, as the library sends them', {}, async ({server, page, go}) => {
  const columns = [];
  for (const journey of ['banking_day', 'screens_in_debug']) {
    const {status, out} = await run(DEMO_HOST, [`${process.env.JOURNEYS}/${journey}.json`, '--server', server.url]);
    assert.equal(status, 0, out);
  }
  for (const {id, path} of await server.exchanges()) {
    if (path !== PATHS.bio) continue;
    const body = await server.json(`exchanges/${id}/request`);
    const {sensorsData, eventList} = body.bio_sensor_event_data;
    await go('/bio/' + id);
    await page.waitForFunction((n) => document.querySelectorAll('.touch .press circle:not(.begin)').length === n, eventList.length);
    await assertPlotted(page, body);
    columns.push(sensorsData[0].length);
  }
  assert.deepEqual([...new Set(columns)].sort((a, b) => a - b), [9, 12]);
});

consoleTest('10 traces: spans, without length, open, ambiguous, appended', {}, async ({server, page, go}) => {
  await server.call(PATHS.risk, bodies.checkpoint('LOGIN', {user: bodies.user()}));
  const [{id, received}] = await server.exchanges();
  await server.call(PATHS.traces, bodies.traces(server.url, received - 2));
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
