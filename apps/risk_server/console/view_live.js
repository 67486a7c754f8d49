// The calls as they come, and one of them in detail.

import {api} from './api.js';
import {quote} from './curl.js';
import {matches, parseQuery} from './query.js';
import {histogram} from './stats.js';
import {store} from './store.js';
import {Empty, go, html, Result, toast, useEffect, useMemo, useRef, useState, useStore, VirtualList} from './ui.js';
import {Detail} from './view_exchange.js';
import {callName, clock, duration, many} from './words.js';

const ROW = 26;
const BINS = 120;

// The rows that the filter line and the time range leave, the newest first.
export function useFiltered() {
  const {shown, query, range, version} = useStore();
  const parsed = useMemo(() => parseQuery(query), [query]);
  const found = useBodySearch(parsed.texts, shown.length);
  const all = useMemo(() => (parsed.terms.length === 0 ? [...shown] : shown.filter((row) => matches(row, parsed, found))).reverse(),
                      [parsed, found, version, shown]);
  const rows = useMemo(() => (range ? all.filter((row) => row.time >= range[0] && row.time <= range[1]) : all), [all, range]);
  return {rows, all, total: shown.length, error: parsed.error};
}

// Ids by text, asked for again when there are further rows, though not at every one of them.
function useBodySearch(texts, count) {
  const [found, setFound] = useState(new Map());
  useEffect(() => {
    let isCurrent = true;
    const timer = setTimeout(async () => {
      const pairs = await Promise.all(texts.map(async (text) => [text, new Set(await store.search(text).catch(() => []))]));
      if (isCurrent && (pairs.length > 0 || found.size > 0)) setFound(new Map(pairs));
    }, 150);
    return () => {
      isCurrent = false;
      clearTimeout(timer);
    };
  }, [texts.join('\n'), texts.length && Math.ceil(count / 50)]);
  return found;
}

export function LiveView({filtered}) {
  const {selected} = useStore();
  if (filtered.total === 0) return html`<${FirstSteps} />`;
  const row = store.find(selected);
  return html`<div class="liveview"><${FilterLine} filtered=${filtered} /><${Timeline} rows=${filtered.all} />
    <div class=${row ? 'split' : 'split alone'}><${Grid} rows=${filtered.rows} />${row && html`<${Detail} row=${row} key=${row.id} />`}</div></div>`;
}

function FilterLine({filtered}) {
  const {query, range, paused, rows, isLive} = useStore();
  const waiting = paused ? rows.length - paused.length : 0;
  return html`<div class="filter">
    <input id="filter" type="search" spellcheck=${false} autocomplete="off" value=${query} aria-label="Filter"
      placeholder=${'path:Get  user:noor  risk>=HIGH  status:503  is:refused  "text"'} onInput=${({currentTarget}) => store.set({query: currentTarget.value})} />
    ${range && html`<button class="chip" onClick=${() => store.set({range: null})}>${clock(range[0])}\u2013${clock(range[1])} \u2715</button>`}
    <span class="count dim" role="status">${filtered.error ?? `${filtered.rows.length} of ${filtered.total}`}</span>
    ${isLive && html`<button aria-pressed=${Boolean(paused)} onClick=${() => store.pause(!paused)} title="Space">
      ${paused ? 'Resume' + (waiting > 0 ? ` (${waiting} new)` : '') : 'Pause'}</button><button onClick=${clearAll} title="c">Clear</button>`}</div>`;
}

export function clearAll() {
  const before = store.clearedTo;
  if (store.rows.length === 0) return;
  store.set({clearedTo: store.rows.at(-1).id, selected: null});
  toast(many(store.rows.length, 'exchange') + ' cleared', {undo: () => store.set({clearedTo: before}), then: () => api.clear().catch(() => {})});
}

// How many calls when; a drag over it looks at that time alone.
function Timeline({rows}) {
  const chart = useMemo(() => histogram(rows, BINS), [rows]);
  const [drag, setDrag] = useState(null);
  const most = Math.max(1, ...chart.bins.map((bin) => bin.calls));
  const binAt = ({currentTarget, clientX}) => {
    const {left, width} = currentTarget.getBoundingClientRect();
    return Math.max(0, Math.min(BINS - 1, Math.floor((clientX - left) / width * BINS)));
  };
  const begin = (event) => {
    event.currentTarget.setPointerCapture(event.pointerId);
    setDrag([binAt(event), binAt(event)]);
  };
  const end = () => {
    if (!drag) return;
    const [from, to] = [...drag].sort((a, b) => a - b);
    setDrag(null);
    store.set({range: from === to ? null : [chart.from + from * chart.width, chart.from + (to + 1) * chart.width]});
  };
  const bars = (key) => chart.bins.map((bin, index) => {
    const height = Math.max(1.5, 22 * bin[key] / most);
    return bin[key] > 0 && html`<rect class=${key} x=${index + 0.1} width="0.8" height=${height} y=${24 - height} />`;
  });
  return html`<svg class="timeline" viewBox="0 0 ${BINS} 24" preserveAspectRatio="none" role="img" aria-label=${'Calls over time, ' + many(rows.length, 'call')}
      onPointerDown=${begin} onPointerMove=${(event) => drag && setDrag([drag[0], binAt(event)])} onPointerUp=${end} onPointerCancel=${() => setDrag(null)}>
    ${drag && html`<rect class="drag" x=${Math.min(...drag)} width=${Math.abs(drag[1] - drag[0]) + 1} height="24" />`}${bars('calls')}${bars('bad')}</svg>`;
}

function Grid({rows}) {
  const {selected} = useStore();
  const index = useMemo(() => rows.findIndex((row) => row.id === selected), [rows, selected]);
  const grid = useRef(null);
  const move = (event) => {
    const step = {ArrowDown: 1, ArrowUp: -1, PageDown: 20, PageUp: -20, Home: -rows.length, End: rows.length}[event.key];
    if (step === undefined || event.ctrlKey || event.altKey) return;
    event.preventDefault();
    select(rows, index + step);
  };
  useEffect(() => {
    // The focus follows the selection once it is in the list.
    if (grid.current.contains(document.activeElement)) grid.current.querySelector('[tabindex="0"]')?.focus({preventScroll: true});
  }, [selected]);
  const head = html`<div role="row" class="row head" aria-rowindex="1">${['#', 'time', 'call', 'user', 'session', 'result', 'ms'].map((name) => html`
    <span role="columnheader" class=${name.length < 3 ? 'number' : ''}>${name}</span>`)}</div>`;
  return html`<div class="list" ref=${grid}>
    <${VirtualList} role="grid" label="Exchanges" className="grid" count=${rows.length} height=${ROW} selected=${index} rowCount=${rows.length + 1} onKey=${move} head=${head}
      draw=${(at) => html`<${GridRow} key=${rows[at].id} row=${rows[at]} at=${at} isSelected=${at === index} isFocusable=${at === Math.max(0, index)} />`} />
    ${rows.length === 0 && html`<${Empty} title="No exchange passes the filter" />`}</div>`;
}

function GridRow({row, at, isSelected, isFocusable}) {
  const {user, session} = row.facts ?? {};
  // Sessions of one device begin alike; their ends tell them apart.
  const cells = [[row.id, 'number'], [clock(row.time, true)], [html`${callName(row)} <em>${row.faultInjected}</em>`], [user ?? '?'],
                 [session ? '\u2026' + session.slice(-6) : '-', 'dim'], [html`<${Result} row=${row} />`], [row.delivery ? duration(row.took) : '\u2026', 'number']];
  return html`<div role="row" class=${'row' + (isSelected ? ' selected' : '')} aria-rowindex=${at + 2} aria-selected=${isSelected} tabindex=${isFocusable ? 0 : -1}
      data-id=${row.id} onClick=${() => store.set({selected: row.id})} onDblClick=${() => go('/x/' + row.id)}>
    ${cells.map(([cell, kind]) => html`<span role="gridcell" class=${kind}>${cell}</span>`)}</div>`;
}

export function select(rows, at) {
  if (rows.length > 0) store.set({selected: rows[Math.max(0, Math.min(rows.length - 1, at))].id});
}

function FirstSteps() {
  const {server, isLive, status} = useStore();
  const url = server?.url ?? 'http://127.0.0.1:PORT/';
  if (!isLive) return html`<${Empty} title="This capture holds no exchange" />`;
  if (status === 'locked') return html`<${Empty} title="The server wants its token"><p>Open the whole address that it printed.</p></${Empty}>`;
  return html`<${Empty} title="No call has come yet"><p>Hand this address, with its last slash, to the library:</p>
    <pre class="snippet">manager->setupWithServerUrl("${url}", "user-17");</pre><p>or send a call by hand:</p>
    <pre class="snippet">curl -H 'Content-Type: application/json; charset=utf-8' -d ${quote('{"keys":{}}')} ${url}qrsk-med/3.0/ThirdPartyCacheEnrichment/</pre>
    <p>or play a journey: <code>./dev demo --server ${url}</code></p></${Empty}>`;
}
