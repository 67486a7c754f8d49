// The page: its frame, its routes and its keys. Start reading here; store.js holds what the views show, feed.js brings it,
// and the modules without "view" in their names decide and are tested without a browser.

import {takeToken} from './api.js';
import {store} from './store.js';
import {copy, Empty, go, html, render, Toast, useEffect, useErrorBoundary, useLayoutEffect, useMemo, useState, useStore} from './ui.js';
import {BiometricsView} from './view_biometrics.js';
import {DiffView} from './view_diff.js';
import {compare, copyCurl, ExchangePage} from './view_exchange.js';
import {ExportView} from './view_export.js';
import {FaultBanner, FaultsView} from './view_faults.js';
import {clearAll, LiveView, select, useFiltered} from './view_live.js';
import {ProblemsView} from './view_problems.js';
import {RulesView} from './view_rules.js';
import {SessionsView} from './view_sessions.js';
import {TracesView} from './view_traces.js';

const NAV = [['live', 'Live'], ['problems', 'Problems'], ['rules', 'Rules'], ['faults', 'Faults'], ['s', 'Sessions'], ['bio', 'Biometrics'], ['traces', 'Traces'], ['export', 'Export']];

const VIEWS = {
  live: ({filtered}) => html`<${LiveView} filtered=${filtered} />`,
  x: ({parts}) => html`<${ExchangePage} id=${parts[0]} />`,
  s: ({parts}) => html`<${SessionsView} id=${parts[0]} />`,
  bio: ({parts}) => html`<${BiometricsView} id=${parts[0]} />`,
  traces: ({parts}) => html`<${TracesView} id=${parts[0]} />`,
  rules: ({values}) => html`<${RulesView} ...${values} />`,
  faults: ({values}) => html`<${FaultsView} ...${values} />`,
  problems: () => html`<${ProblemsView} />`,
  diff: ({parts}) => html`<${DiffView} left=${parts[0]} right=${parts[1]} />`,
  export: ({filtered}) => html`<${ExportView} filtered=${filtered} />`,
};

// "#/x/412?a=b" is {view: 'x', parts: ['412'], values: {a: 'b'}}.
function routeOf(hash) {
  const [path, query] = hash.replace(/^#\/?/, '').split('?');
  const [view, ...parts] = path.split('/').map(decodeURIComponent);
  return {view: view || 'live', parts, values: Object.fromEntries(new URLSearchParams(query))};
}

function useRoute() {
  const [route, setRoute] = useState(routeOf(location.hash));
  useLayoutEffect(() => addEventListener('hashchange', () => setRoute(routeOf(location.hash))), []);
  useEffect(() => {
    if (route.view === 'live' && route.values.q !== undefined) store.set({query: route.values.q});
  }, [route]);
  return route;
}

const STATUS = {
  connecting: ['\u25cb', 'connecting'], live: ['\u25cf', 'live'], polling: ['\u25d0', 'live, asked once a second'],
  offline: ['\u25cb', 'no server'], locked: ['\u25cb', 'token wanted'], paused: ['\u2016', 'paused'],
};

function Status() {
  const {status, capture, paused, rows} = useStore();
  const [, tick] = useState(0);
  useEffect(() => {
    const timer = setInterval(() => tick((n) => n + 1), 1000);
    return () => clearInterval(timer);
  }, []);
  if (capture) return html`<span class="status">${capture.name}, read-only</span>`;
  const state = paused ? 'paused' : status;
  const since = Date.now() - 5000;
  let recent = 0;
  while (rows.at(-1 - recent)?.time > since) recent += 1;
  return html`<span class=${'status ' + state} role="status"><span aria-hidden="true">${STATUS[state][0]}</span> ${STATUS[state][1]} ${state === 'live' && recent > 0 && (recent / 5).toFixed(1) + '/s'}</span>`;
}

function Frame() {
  const route = useRoute();
  const {masked, theme, shown, version, server, lost, capture, isReport} = useStore();
  const [help, setHelp] = useState(false);
  const bad = useMemo(() => shown.filter((row) => row.fault).length, [version, shown]);
  const filtered = useFiltered();
  const toggleHelp = () => setHelp(!help);
  useKeys(route, filtered, toggleHelp);
  const counts = {problems: bad, faults: server?.faults.list.length};
  const view = VIEWS[route.view] ?? (() => html`<${Empty} title=${`There is no view \u201c${route.view}\u201d`} />`);
  const note = (text, word, act) => html`<div class="banner" role="status"><span>${text}</span>${word && html`<button class="small" onClick=${act}>${word}</button>`}</div>`;
  return html`<header class="top"><a class="home" href="#/live">QuorvanceSDK <b>console</b></a>
      <nav aria-label="Views">${NAV.filter(([name]) => !isReport || !['rules', 'faults'].includes(name)).map(([name, title]) => html`
        <a href=${'#/' + name} aria-current=${name === route.view ? 'page' : undefined}>${title} ${counts[name] > 0 && html`<span class="badge">${counts[name]}</span>`}</a>`)}</nav>
      <span class="grow"></span><${Status} />
      ${server && html`<button class="small ghost" title="Copy the address of the service" onClick=${() => copy(server.url, 'The address')}>${server.url.replace('http://', '')}</button>`}
      ${isReport ? html`<span class="status">${masked ? 'masked' : 'not masked'}</span>` : html`<button class="small" aria-pressed=${masked} onClick=${() => store.setMasked(!masked)} title="m">mask</button>`}
      <button class="small" aria-label="Light or dark" onClick=${() => store.setTheme(theme === 'dark' ? 'light' : 'dark')}>${theme === 'dark' ? '\u2600' : '\u263e'}</button>
      <button class="small" aria-label="Keys" aria-expanded=${help} onClick=${toggleHelp}>?</button></header>
    ${capture && !isReport && note(`${capture.name} was imported and is read-only.`, 'Back to the live calls', () => store.set({capture: null}))}
    ${capture?.notes?.map((text) => note(text))}<${FaultBanner} />
    ${lost > 0 && note(`${lost} exchanges were dropped before this page read them; the log file has them.`, 'Ok', () => store.set({lost: 0}))}
    ${help && html`<${Help} />`}
    <main><${Guarded} key=${route.view + route.parts}>${view({...route, filtered})}</${Guarded}></main><${Toast} />`;
}

// A view that fails leaves the frame alone.
function Guarded({children}) {
  const [error] = useErrorBoundary((e) => console.error(e));
  return error ? html`<${Empty} title="This view failed"><p>${error.message}</p></${Empty}>` : children;
}

const KEYS = [['/', 'filter'], ['j k', 'next, previous exchange'], ['Enter', 'open it'], ['Esc', 'close it, leave the field'], ['Space', 'pause, resume'], ['d', 'compare with another'],
              ['y', 'copy as curl'], ['m', 'mask'], ['c', 'clear (it can be undone)'], ['F8', 'next violation in a body'], ['?', 'these keys']];

function Help() {
  return html`<aside class="help" aria-label="Keys"><dl>${KEYS.map(([key, does]) => html`<dt><kbd>${key}</kbd></dt><dd>${does}</dd>`)}</dl>
    <p><code>path:Get user:noor session:F2F0 status:503 risk>=HIGH ms>100 is:refused is:fault is:lost rule:6 "any text" -path:Tracing</code></p></aside>`;
}

function useKeys(route, filtered, onHelp) {
  // At once with what is drawn: a key must act on what is seen.
  useLayoutEffect(() => {
    const listen = (event) => {
      const {target, key} = event;
      const isIn = (selector) => Boolean(target.closest?.(selector));
      if (event.ctrlKey || event.altKey || event.metaKey || (isIn('input, textarea, select') && key !== 'Escape')) return;
      // A button takes its own keys.
      if (isIn('button, a') && (key === ' ' || key === 'Enter')) return;
      const act = actionOf(key, route, filtered, onHelp, isIn('input, textarea, select') && target);
      if (!act) return;
      event.preventDefault();
      act();
    };
    addEventListener('keydown', listen);
    return () => removeEventListener('keydown', listen);
  });
}

function actionOf(key, {view}, {rows}, onHelp, field) {
  const at = rows.findIndex((row) => row.id === store.selected);
  const row = rows[at];
  const move = (step) => (view === 'live' || view === 'x') && (() => {
    select(rows, at + step);
    if (view === 'x') go('/x/' + store.selected);
  });
  return {
    '/': () => {
      go('/live');
      setTimeout(() => document.getElementById('filter')?.focus());
    },
    Escape: () => (field ? field.blur() : view === 'x' ? go('/live') : store.set({selected: null})),
    j: move(1), k: move(-1),
    Enter: view === 'live' && row && (() => go('/x/' + row.id)),
    ' ': store.isLive && (() => store.pause(!store.paused)),
    d: row && (() => compare(row)), y: row && (() => copyCurl(row)),
    m: !store.isReport && (() => store.setMasked(!store.masked)),
    c: store.isLive && clearAll, '?': onHelp,
  }[key];
}

export function start() {
  takeToken();
  if (!store.isReport) store.connect();
  render(html`<${Frame} />`, document.getElementById('app'));
}
