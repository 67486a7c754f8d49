// What the fingers and the sensors said, and how verdicts and latencies went over time.

import {complaints, decode, groupsOf, MAX_INTERVAL, series} from './biometrics.js';
import {Plot} from './plot.js';
import {latencies, percentile} from './stats.js';
import {store} from './store.js';
import {Empty, html, plain, Sided, useLoaded, useMemo, useStore, Waiting, WithTable} from './ui.js';
import {textOf} from './view_exchange.js';
import {clock, duration, many, RISKS, riskWord} from './words.js';

const AXES = [{label: 'x', colour: '--bad'}, {label: 'y', colour: '--ok'}, {label: 'z', colour: '--accent'}];
const NOTHING = [];

export function BiometricsView({id}) {
  const {shown, version} = useStore();
  const uploads = useMemo(() => shown.filter((row) => row.path.endsWith('/BiometricData/')).reverse(), [version, shown]);
  const current = uploads.find((row) => row.id === Number(id));
  const items = [{hash: '#/bio', title: 'Verdicts and latency', says: 'over time', isCurrent: !current}, ...uploads.map((row) => ({
    hash: '#/bio/' + row.id, title: plain(row.facts?.screen ?? '#' + row.id), says: html`#${row.id} ${clock(row.time)} ${plain(row.facts?.user ?? '')}`, isCurrent: row === current}))];
  return html`<${Sided} title=${many(uploads.length, 'upload')} items=${items}>
    ${current ? html`<${Upload} row=${current} key=${current.id} />` : html`<${Trends} hasUploads=${uploads.length > 0} />`}</${Sided}>`;
}

function Trends({hasUploads}) {
  const {shown, version} = useStore();
  const begin = shown[0]?.time;
  const verdicts = useMemo(() => shown.filter((row) => row.risk !== undefined), [version, shown]);
  const taken = useMemo(() => latencies(shown.slice(-2000)), [version, shown]);
  const levels = useMemo(() => [verdicts.map((row) => row.time - begin), verdicts.map((row) => row.risk)], [verdicts]);
  const times = useMemo(() => [taken.map((t) => t.time - begin), ...['ms', 'median', 'p95'].map((key) => taken.map((t) => t[key]))], [taken]);
  if (begin === undefined) return html`<${Empty} title="Nothing to plot yet" />`;
  const over = (part) => duration(percentile(times[1], part) * 1000);
  return html`<div class="page"><${WithTable} title="Verdict levels" columns=${['time', 'level', 'call']} rows=${verdicts.map((row) => [clock(row.time, true), riskWord(row.risk), '#' + row.id])}>
      <${Plot} data=${levels} lines=${[{label: 'level', colour: '--accent'}]} kind="points" range=${[-2.5, 3.5]} height=${150} group="trend" label="Verdict levels over time" />
      <p class="dim">${RISKS.map(([word, value]) => `${value} ${word}`).join(' \u00b7 ')}</p></${WithTable}>
    <${WithTable} title=${`Latency of the server: median ${over(0.5)} ms, p95 ${over(0.95)} ms`} columns=${['time', 'ms', 'median', 'p95']}
      rows=${taken.map((t) => [clock(t.time, true), t.ms, t.median, t.p95])}>
      <${Plot} data=${times} lines=${[{label: 'ms', colour: '--muted'}, {label: 'median of 50', colour: '--accent'}, {label: 'p95 of 50', colour: '--bad'}]} height=${180} unit="ms"
        group="trend" label="Latency over time" /></${WithTable}>
    ${!hasUploads && html`<p class="dim">No biometric upload yet: the library sends one when a watched screen is finished, if the configuration has <code>enable_bio_collection</code> on.</p>`}</div>`;
}

function Upload({row}) {
  const {masked} = useStore();
  const {value, error} = useLoaded(async () => {
    const {bio_sensor_event_data: event} = JSON.parse(textOf(await store.body(row.id, 'request')));
    if (!event) throw new Error('it holds no bio_sensor_event_data');
    return {decoded: decode(event), screen: await screenOf(row)};
  }, [row.id, masked]);
  if (!value) return html`<${Waiting} error=${error} />`;
  const {decoded: {screen, screenId, touch, motion}} = value;
  return html`<div class="page bio"><header class="bar"><h1>${plain(screen ?? '')} <span class="dim">${screenId}</span></h1><a href=${'#/x/' + row.id}>#${row.id}</a>
      <span class="dim">${many(touch.points.length, 'touch row')}, ${many(motion.count, 'motion row')}</span></header>
    ${complaints(value.decoded).map((text) => html`<p class="warnbar">${text}</p>`)}
    <div class="biogrid"><${Motion} motion=${motion} touch=${touch} /><${Touch} touch=${touch} screen=${value.screen} /></div></div>`;
}

// The size of the screen, which the session's payload tells.
async function screenOf(row) {
  const session = store.shown.findLast((other) => other.path.endsWith('/SendSessionData/') && other.facts?.session === row.facts?.session);
  if (!session) return null;
  try {
    const {screenWidth: width, screenHeight: height} = JSON.parse(textOf(await store.body(session.id, 'request'))).device_data;
    return width > 0 && height > 0 ? {x: 0, y: 0, width, height} : null;
  } catch {
    return null;
  }
}

function Motion({motion, touch}) {
  const {times, intervals} = motion;
  const since = (time) => time - times[0];
  const bands = useMemo(() => (motion.isTimed && touch.isTimed ? touch.presses.map(({points}) => ({from: since(points[0].time), to: since(points.at(-1).time)})) : NOTHING), [motion]);
  const groups = useMemo(() => groupsOf(motion).map((group) => ({...group, data: series(motion, group)})), [motion]);
  const gaps = useMemo(() => [times.slice(1).map(since), intervals], [motion]);
  if (motion.count === 0) return html`<p class="note dim">No motion row: the device has no accelerometer, or no finger was down.</p>`;
  const rowsOf = (data) => data[0].map((_, index) => data.map((axis) => axis[index]));
  return html`<div class="motion">${groups.map(({title, unit, data}) => html`<${WithTable} title=${`${title} (${unit})`} key=${title} columns=${['ms', 'x', 'y', 'z']} rows=${rowsOf(data)}>
      <${Plot} data=${data} lines=${AXES} unit=${unit} group="motion" bands=${bands} label=${title + ' over time'} /></${WithTable}>`)}
    ${intervals.length > 0 && html`<${WithTable} title="Interval between samples (ms)" columns=${['at', 'ms']} rows=${rowsOf(gaps)}>
      <${Plot} data=${gaps} lines=${[{label: 'interval', colour: '--muted'}]} unit="ms" group="motion" height=${90} kind="bars" label="Intervals between samples"
        range=${[0, 1.2 * Math.max(...intervals.filter((ms) => ms <= MAX_INTERVAL), 1)]} /></${WithTable}>`}</div>`;
}

// The path over the screen: the larger the contact the wider, the stronger the press the darker.
function Touch({touch: {points, presses, isTimed}, screen}) {
  if (points.length === 0) return html`<p class="note dim">No touch row.</p>`;
  const box = screen ?? around(points);
  const most = Math.max(...points.map((p) => p.pressure), 0);
  const scale = Math.max(box.width, box.height) / 400;
  const tags = new Map();
  for (const point of points) if (isTimed && !tags.has(point.view)) tags.set(point.view, point);
  return html`<${WithTable} title=${screen ? `Touches on ${box.width} \u00d7 ${box.height} points` : 'Touches, size of the screen unknown'} columns=${['time', 'x', 'y', 'size', 'pressure', 'id', 'view']}
      rows=${points.map((p) => [p.time, p.x, p.y, p.size, p.pressure, p.action, p.view])}>
    <svg class=${'touch' + (screen ? '' : ' unknown')} viewBox=${`${box.x} ${box.y} ${box.width} ${box.height}`} role="img" aria-label=${many(presses.length, 'press') + ' as paths'}>
      <rect class="screen" ...${box} />${presses.map((press) => html`<g class=${'press ' + press.state}>
        <polyline points=${press.points.map((p) => `${p.x},${p.y}`).join(' ')} stroke-width=${1.5 * scale} />
        ${press.points.map((p) => html`<circle cx=${p.x} cy=${p.y} r=${Math.max(2 * scale, p.size / 2)} fill-opacity=${most > 0 ? 0.2 + 0.8 * p.pressure / most : 0.6}>
          <title>${p.x}, ${p.y} size ${p.size} pressure ${p.pressure}</title></circle>`)}
        <circle class="begin" cx=${press.points[0].x} cy=${press.points[0].y} r=${3 * scale} /></g>`)}
      ${[...tags].map(([view, p]) => html`<text x=${p.x + 8 * scale} y=${p.y - 8 * scale} style=${{fontSize: 11 * scale + 'px'}}>${view}</text>`)}</svg>
    <p class="dim">${presses.map((press, index) => html`press ${index + 1}: ${press.points.length} samples, ${press.state}${isTimed && `, ${press.points.at(-1).time - press.points[0].time} ms`}<br />`)}</p></${WithTable}>`;
}

function around(points) {
  const pad = 20;
  const least = (key) => Math.min(...points.map((p) => p[key])) - pad;
  const size = (key) => Math.max(...points.map((p) => p[key])) + pad - least(key);
  return {x: least('x'), y: least('y'), width: size('x'), height: size('y')};
}
