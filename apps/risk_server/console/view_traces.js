// A trace upload as a waterfall.

import {exchangeOf, spansOf} from './spans.js';
import {store} from './store.js';
import {Empty, html, plain, Sided, Table, useLoaded, useMemo, useState, useStore, Waiting} from './ui.js';
import {textOf} from './view_exchange.js';
import {clock, many} from './words.js';

const ROW = 20;
const NAME = 260;
const WIDTH = 1000;

export function TracesView({id}) {
  const {shown, version} = useStore();
  const uploads = useMemo(() => shown.filter((row) => row.path.endsWith('/TracingData/')).reverse(), [version, shown]);
  if (uploads.length === 0) {
    return html`<${Empty} title="No trace upload yet"><p>The library uploads its traces every 30 seconds, the first time 30 seconds after the set-up, if the
      configuration has a trace level on. A demo ends earlier than that.</p></${Empty}>`;
  }
  const current = uploads.find((row) => row.id === Number(id)) ?? uploads[0];
  const items = uploads.map((row) => ({hash: '#/traces/' + row.id, title: '#' + row.id, says: clock(row.time), isCurrent: row === current}));
  return html`<${Sided} title=${many(uploads.length, 'upload')} items=${items}><${Upload} row=${current} key=${current.id} /></${Sided}>`;
}

function Upload({row}) {
  const {shown, masked} = useStore();
  const [zoom, setZoom] = useState(1);
  const [find, setFind] = useState('');
  const {value, error} = useLoaded(async () => {
    const {tracingData} = JSON.parse(textOf(await store.body(row.id, 'request')));
    return spansOf(Array.isArray(tracingData) ? tracingData : []);
  }, [row.id, masked]);
  if (!value) return html`<${Waiting} error=${error} />`;
  const holds = (span) => find !== '' && (span.name + span.params.join()).toLowerCase().includes(find.toLowerCase());
  return html`<div class="page traces"><header class="bar"><h1>#${row.id}: ${many(value.spans.length, 'span')}, ${many(value.pins.length, 'pin')}</h1><span class="grow"></span>
      <button aria-label="Narrower" onClick=${() => setZoom(Math.max(1, zoom / 2))}>\u2212</button><button aria-label="Wider" onClick=${() => setZoom(Math.min(256, zoom * 2))}>+</button>
      <input type="search" placeholder="find" aria-label="Find a span" value=${find} onInput=${({currentTarget}) => setFind(currentTarget.value)} />
      ${find && html`<span class="dim">${value.spans.filter(holds).length} found</span>`}</header>
    <${Waterfall} found=${value} zoom=${zoom} holds=${holds} rows=${shown} /><${SpanTable} found=${value} rows=${shown} /></div>`;
}

function tookOf({start, end}) {
  return end === undefined ? 'open' : end === start ? '<1 ms' : end - start + ' ms';
}

function Waterfall({found, zoom, holds, rows}) {
  const total = Math.max(1, found.end - found.begin);
  const width = WIDTH * zoom;
  const x = (time) => (time - found.begin) / total * (width - 60) + 4;
  const lines = found.threads.flatMap((thread) => [{thread}, ...found.spans.filter((span) => span.thread === thread).sort((a, b) => a.start - b.start || a.depth - b.depth).map((span) => ({span}))]);
  const height = lines.length * ROW + 26;
  const top = (index) => 18 + index * ROW;
  const count = Math.min(40, 8 * zoom);
  const ticks = Array.from({length: count}, (_, index) => found.begin + total * index / count);
  return html`<div class="waterfall"><svg class="names" width=${NAME} height=${height} aria-hidden="true">${lines.map(({thread, span}, index) => html`
      <text class=${thread ? 'thread' : holds(span) ? 'found' : ''} x=${thread ? 2 : 10 + span.depth * 12} y=${top(index) + 13}>${plain(thread ?? span.name)}</text>`)}</svg>
    <div class="scroll" tabindex="0" role="region" aria-label="Waterfall"><svg width=${width} height=${height} role="group" aria-label=${`${many(found.spans.length, 'span')} over ${total} milliseconds, as in the table`}>
      <pattern id="hatch" width="6" height="6" patternUnits="userSpaceOnUse" patternTransform="rotate(45)"><rect class="bed" width="6" height="6" /><line class="hatch" y2="6" /></pattern>
      ${ticks.map((time) => html`<g class="tick"><line x1=${x(time)} x2=${x(time)} y1="12" y2=${height} /><text x=${x(time) + 2} y="10">+${Math.round(time - found.begin)} ms</text></g>`)}
      ${lines.map(({span}, index) => span && html`<${Span} span=${span} top=${top(index)} x=${x} end=${found.end} isFound=${holds(span)} target=${exchangeOf(span, rows)} />`)}
      ${found.pins.filter((pin) => pin.time !== undefined).map((pin) => html`<g class="pin"><title>${pinText(pin)}</title><path d=${`M${x(pin.time)} 12v${height - 16}`} /><circle cx=${x(pin.time)} cy="14" r="4" /></g>`)}</svg></div></div>`;
}

function Span({span, top, x, end, isFound, target}) {
  const [from, to] = [x(span.start), x(span.end ?? end)];
  const bar = html`<g class=${'span' + (span.end === span.start ? ' instant' : '') + (isFound ? ' found' : '')}><title>${span.name}(${span.params.join(', ')}) ${tookOf(span)} ${span.state}</title>
    <rect x=${from} y=${top + 3} height=${ROW - 6} width=${Math.max(3, to - from)} rx="2" style=${span.state === 'closed' ? {} : {fill: 'url(#hatch)'}} />
    ${span.middles.map(({time, text}) => html`<circle class="middle" cx=${x(time)} cy=${top + ROW / 2} r="3"><title>${text}</title></circle>`)}
    <text x=${Math.max(to, from + 3) + 4} y=${top + 13}>${tookOf(span)}${target && ` \u2192 probably #${target.id}`}</text></g>`;
  return target ? html`<a href=${'#/x/' + target.id}>${bar}</a>` : bar;
}

function pinText({kind, entry}) {
  if (kind === 'error') return `error: ${entry?.error_type ?? ''} ${entry?.error_stack ?? ''}`;
  return (kind === 'end' ? 'an end without a start: ' : 'appended to nothing: ') + (entry.methodName ?? '');
}

function SpanTable({found, rows}) {
  const spans = found.spans.map((span) => {
    const target = exchangeOf(span, rows);
    return [clock(span.start, true), html`<b>${plain(span.name)}</b> <span class="dim">${plain(span.params.join(', ').slice(0, 120))}</span>`, plain(span.thread), tookOf(span),
            span.state + (span.middles.length ? `, ${span.middles.length} appended` : ''), target && html`<a href=${'#/x/' + target.id}>probably #${target.id}</a>`];
  });
  const pins = found.pins.map((pin) => [pin.time && clock(pin.time, true), html`<span class="pinrow">${plain(pinText(pin))}</span>`]);
  return html`<${Table} className="wide spans" columns=${['start', 'span', 'thread', 'took', 'state', 'exchange']} rows=${[...spans, ...pins]} />`;
}
