// One exchange: its bodies with what is wrong in them, why it was answered so, and what can be done with it.

import {api} from './api.js';
import {curlCommand, isInline} from './curl.js';
import {placeText} from './diff.js';
import {layOut, rawLines} from './json_lines.js';
import {ruleText} from './rules_text.js';
import {store} from './store.js';
import {copy, download, Empty, go, html, plain, Result, Sign, toast, useEffect, useLoaded, useMemo, useState, useStore, VirtualList, Waiting} from './ui.js';
import {bytes, callName, clock, duration} from './words.js';

const LINE = 18;
const TABS = ['Body', 'Reply', 'Why', 'Raw'];

// `isPage` where it is a page of its own, not beside the list.
export function Detail({row, isPage}) {
  const [tab, setTab] = useState('Body');
  const [start, setStart] = useState(null);
  const show = (violation) => {
    setTab('Body');
    setStart(violation);
  };
  const turn = ({key, currentTarget}) => {
    const next = TABS.indexOf(tab) + ({ArrowRight: 1, ArrowLeft: -1}[key] ?? NaN);
    if (!TABS[next]) return;
    setTab(TABS[next]);
    currentTarget.parentElement.children[next].focus();
  };
  return html`<section class="detail" aria-label=${'Exchange ' + row.id}>
    <header><b>#${row.id}</b><b>${callName(row)}</b><${Result} row=${row} /><span class="grow"></span>
      ${!isPage && html`<a href=${'#/x/' + row.id}>open</a><button class="small ghost" aria-label="Close" onClick=${() => store.set({selected: null})}>\u2715</button>`}</header>
    <${Links} row=${row} />
    <div class="tabs"><span role="tablist">${TABS.map((name) => html`<button role="tab" aria-selected=${tab === name} tabindex=${tab === name ? 0 : -1}
      onClick=${() => setTab(name)} onKeyDown=${turn}>${name}</button>`)}</span><span class="grow"></span><${Actions} row=${row} /></div>
    <div role="tabpanel" class="panel">
      ${tab === 'Body' && html`<${BodyView} row=${row} part="request" violations=${row.violations} start=${start} />`}
      ${tab === 'Reply' && html`<${BodyView} row=${row} part="reply" />`}
      ${tab === 'Why' && html`<${Why} row=${row} onShow=${show} />`}${tab === 'Raw' && ['request', 'reply'].map((part) => html`<${Raw} row=${row} part=${part} key=${part} />`)}</div></section>`;
}

function Links({row}) {
  const session = row.facts?.session;
  return html`<div class="links"><code>${row.method} ${plain(row.path)}</code>
    ${session && html`<a href=${'#/s/' + encodeURIComponent(session)}>session</a>`}
    ${row.path.endsWith('/BiometricData/') && html`<a href=${'#/bio/' + row.id}>plots</a>`}
    ${row.path.endsWith('/TracingData/') && html`<a href=${'#/traces/' + row.id}>waterfall</a>`}</div>`;
}

// Two calls are compared by marking one and then the other.
export function compare(row) {
  const {marked} = store;
  if (marked !== null && marked !== row.id) return go(`/diff/${marked}/${row.id}`);
  store.set({marked: row.id});
  return toast(`#${row.id} is the left side; choose the other one and press d`);
}

function Actions({row}) {
  const {marked, isLive} = useStore();
  const action = (name, act) => html`<button class="small" onClick=${act}>${name}</button>`;
  return [action('curl', () => copyCurl(row)), action(marked !== null && marked !== row.id ? `diff with #${marked}` : 'diff', () => compare(row)),
          isLive && row.risk !== undefined && action('rule', () => go('/rules?from=' + row.id)),
          isLive && row.path && action('fault', () => go('/faults?path=' + encodeURIComponent(row.path)))];
}

export async function copyCurl(row) {
  const body = await store.body(row.id, 'request');
  const file = `body-${row.id}.bin`;
  const inline = isInline(body);
  if (!inline) download(file, body);
  await copy(curlCommand({baseUrl: store.server?.url ?? 'http://127.0.0.1:8080/', ...row, body, file}), inline ? 'The command' : `The command (${file} was downloaded for it)`);
}

// The text of the bytes, or null where they are none.
export function textOf(content) {
  try {
    return new TextDecoder('utf-8', {fatal: true, ignoreBOM: true}).decode(content);
  } catch {
    return null;
  }
}

function useBody(row, part) {
  const {value, error} = useLoaded(() => store.body(row.id, part), [row.id, part, store.masked]);
  const text = useMemo(() => value && textOf(value), [value]);
  return {value, error, text};
}

function BodyView({row, part, violations = [], start}) {
  const {value, error, text} = useBody(row, part);
  const [current, setCurrent] = useState(undefined);
  const layout = useMemo(() => (typeof text === 'string' ? layOut(text, violations) : null), [text, violations]);
  const marked = useMemo(() => (layout?.lines ?? []).flatMap((line, at, all) => (line.mark !== undefined && line.mark !== all[at - 1]?.mark ? [at] : [])), [layout]);
  const next = (step) => setCurrent(marked[(marked.indexOf(current) + step + marked.length) % marked.length]);
  useEffect(() => {
    const listen = (event) => {
      if (event.key !== 'F8') return;
      event.preventDefault();
      next(event.shiftKey ? -1 : 1);
    };
    addEventListener('keydown', listen);
    return () => removeEventListener('keydown', listen);
  });
  useEffect(() => setCurrent(start ? layout?.lines.findIndex((line) => violations[line.mark] === start) : marked[0]), [layout, start]);
  if (!value) return html`<${Waiting} error=${error} />`;
  if (value.length === 0) return html`<p class="note dim">${row.status === 0 && part === 'reply' ? 'No reply went out.' : 'An empty body.'}</p>`;
  if (!layout) return html`<${Hex} content=${value} />`;
  return html`<div class="bodyview">
    ${part === 'request' && row.fault && html`<div class="faultbar bad"><${Sign} kind="bad" mark="\u2716" word="refused" /><span class="reason" tabindex="0">${plain(row.fault)}</span>${marked.length > 1 && html`<button class="small" onClick=${() => next(1)} title="F8">next of ${marked.length}</button>`}</div>`}
    <${Lines} lines=${layout.lines} violations=${violations} current=${current} label=${part} /></div>`;
}

function Lines({lines, violations = [], current, label}) {
  return html`<${VirtualList} className="code" count=${lines.length} height=${LINE} label=${label} selected=${current}
    draw=${(at) => html`<${Line} key=${at} line=${lines[at]} number=${at + 1} isCurrent=${at === current} reason=${violations[lines[at].mark]?.reason} />`} />`;
}

function Line({line: {mark, ghost, depth, parts}, number, isCurrent, reason}) {
  return html`<div class=${'line' + (mark !== undefined ? ' marked' : '') + (ghost ? ' ghost' : '') + (isCurrent ? ' current' : '')}>
    <span class="gutter" aria-hidden="true">${ghost ? '+' : number}</span>
    <span class="text" style=${{paddingLeft: depth * 14 + 'px'}}>${parts.map((part) => html`<span class=${part.kind} title=${part.title}>${plain(part.text)}</span>`)}</span>
    ${reason && !ghost && html`<span class="why">${plain(reason)}</span>`}</div>`;
}

function Raw({row, part}) {
  const {value, error, text} = useBody(row, part);
  const lines = useMemo(() => (typeof text === 'string' ? rawLines(text) : null), [text]);
  if (!value) return html`<${Waiting} error=${error} />`;
  return html`<div class="bodyview"><div class="faultbar"><b>${part}</b><span class="dim">${bytes(value.length)}</span><span class="grow"></span>${text && html`<button class="small" onClick=${() => copy(text, 'The body')}>Copy</button>`}
      <button class="small" onClick=${() => download(`${part}-${row.id}.bin`, value)}>Download</button></div>
    ${lines ? html`<${Lines} lines=${lines} label=${'raw ' + part} />` : html`<${Hex} content=${value} />`}</div>`;
}

// Bytes that are no text.
function Hex({content}) {
  const hex = (at) => Array.from(content.subarray(at * 16, at * 16 + 16), (byte) => byte.toString(16).padStart(2, '0')).join(' ');
  return html`<${VirtualList} className="code" count=${Math.ceil(content.length / 16)} height=${LINE} label="bytes" draw=${(at) => html`<div class="line" key=${at}>
    <span class="gutter">${at * 16}</span>${hex(at)}</div>`} />`;
}

const DELIVERIES = {whole: 'the whole reply', cut: 'a part of it, then closed', reset: 'reset', closed: 'closed without a reply', clientLeft: 'the client left before it had all'};

function Why({row, onShow}) {
  const {server, isLive} = useStore();
  const rules = useLoaded(() => isLive && row.rule !== undefined && api.read('rules'), [row.id, server?.rules.version]);
  const rule = rules.value && rules.value.value[row.rule];
  const entries = [
    ['received', clock(row.received, true)],
    ['decided', row.fault ? html`<b class="result bad">refused</b> ${plain(row.fault)}` : row.path ? 'accepted' : 'no call: the connection was closed'],
    row.violations && ['violations', html`<ol>${row.violations.map((violation) => html`<li><button class="link" onClick=${() => onShow(violation)}>
      ${plain(placeText(violation.place))}</button> ${plain(violation.reason)}</li>`)}</ol>`],
    row.risk !== undefined && ['verdict', html`<${Result} row=${{...row, fault: undefined, status: 200}} /> ${row.rule === undefined ? 'no rule applied' : 'rule ' + (row.rule + 1)}
      ${rule && html`: <code>${ruleText(rule)}</code>`}`],
    row.faultInjected && ['fault', row.faultInjected + ' was applied'],
    ['status', row.status || 'none'], ['delivery', DELIVERIES[row.delivery] ?? 'under way'],
    row.took !== undefined && ['took', duration(row.took) + ' ms'],
    ['type', plain(row.contentType || 'none')], ['sizes', `request ${bytes(row.requestSize)}, reply ${bytes(row.replySize)}`],
    ...Object.entries(row.facts ?? {}).map(([name, value]) => [name, plain(String(value))]),
  ];
  return html`<dl class="why">${entries.filter(Boolean).map(([name, value]) => html`<dt>${name}</dt><dd>${value}</dd>`)}</dl>`;
}

export function ExchangePage({id}) {
  useStore();
  const row = store.find(Number(id));
  if (!row) return html`<${Empty} title=${`#${id} is not kept`} />`;
  return html`<${Detail} row=${row} isPage=${true} key=${row.id} />`;
}
