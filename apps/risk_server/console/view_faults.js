// Faults on demand: by a click for the usual ones, by JSON for all.

import {api} from './api.js';
import {faultText} from './rules_text.js';
import {complain, Empty, html, Table, toast, useEffect, useMemo, useState, useStore} from './ui.js';
import {CheckSign, JsonEditor, watchCheck} from './view_rules.js';
import {many} from './words.js';

const PRESETS = [
  ['+3 s', {latency: 3000}], ['503', {status: 503}], ['reset', {resetBeforeReply: true}], ['hang', {hang: true}],
  ['half a body', {cutBody: 20}], ['no JSON', {body: '<html>captive portal</html>'}], ['1 byte/s', {trickle: 1}],
  ['close', {closeWithoutReply: true}], ['empty', {emptyBody: true}], ['9 MB', {oversize: 9437184}],
];

// Only the list that is shown is replaced.
function replaceFaults(server, list) {
  return api.replace('faults', list, `"${server.faults.version}"`).catch((error) => (
    toast(error.status === 412 ? 'Someone else changed the faults meanwhile; try again' : error.message)));
}

// The list with a further fault; the same once more is the last one for more calls.
export function withFault(list, fault) {
  const last = list.at(-1);
  const {times: more, ...kind} = fault;
  const {times, ...lastKind} = last ?? {};
  if (!more || !times || JSON.stringify(kind) !== JSON.stringify(lastKind)) return [...list, fault];
  return [...list.slice(0, -1), {...last, times: times + more}];
}

export function FaultsView({path}) {
  const {server, isLive, shown} = useStore();
  const [scope, setScope] = useState(path ?? '*');
  const [bounds, setBounds] = useState({times: 1, skip: 0});
  const [text, setText] = useState(null);
  const [check, setCheck] = useState({});
  useEffect(() => path && setScope(path), [path]);
  useEffect(() => watchCheck('faults', text, setCheck), [text, server?.calls]);
  const paths = useMemo(() => [...new Set([path, ...shown.map((row) => row.path)])].filter((p) => p?.startsWith('/')).sort(), [shown.length, path]);
  if (!isLive) return html`<${Empty} title="A capture has no faults in force" />`;
  const active = server?.faults.list ?? [];
  const faults = active.map((entry) => entry.fault);
  const set = (list) => replaceFaults(server, list);
  const add = (effect) => {
    const fault = {path: scope, ...effect};
    for (const [key, value] of Object.entries(bounds)) if (value > 0) fault[key] = value;
    return set(withFault(faults, fault));
  };
  const bound = (key) => html`<label>${key} <input type="number" min="0" value=${bounds[key]} onInput=${({currentTarget}) => setBounds({...bounds, [key]: +currentTarget.value})} /></label>`;
  return html`<div class="page">
    <header class="bar"><h1>Faults</h1><span class="dim">the next calls get what you choose; the decision and the log stay as they are</span></header>
    <fieldset><legend>For</legend><label>call <select aria-label="path" value=${scope} onChange=${({currentTarget}) => setScope(currentTarget.value)}>
        <option value="*">all</option>${paths.map((p) => html`<option value=${p}>${p}</option>`)}</select></label>
      ${bound('times')}${bound('skip')}<span class="dim">times 0: until cleared</span></fieldset>
    <p class="chips presets">${PRESETS.map(([name, effect]) => html`<button onClick=${() => add(effect)}>${name}</button>`)}
      <button onClick=${() => api.restart(3000).then(() => toast('The service port is down for 3 s'), complain)}>restart, 3 s down</button></p>
    <h2>In force</h2>
    ${active.length === 0 ? html`<p class="dim">none</p>` : html`<${Table} className="wide" columns=${['fault', 'calls seen', 'struck', '']} rows=${active.map((entry, index) => [
        faultText(entry.fault), entry.calls, html`<span class="struck">${entry.struck}</span>`,
        html`<button class="small" onClick=${() => set(faults.filter((_, i) => i !== index))}>remove</button>`])} />
      <p><button onClick=${() => set([])}>Clear all</button> <span class="dim">a change counts anew</span></p>`}
    <h2>As JSON</h2>
    ${text === null ? html`<button onClick=${() => setText(JSON.stringify(faults, null, 1))}>Edit</button>` : html`
      <p><${CheckSign} check=${check} what="calls" /></p><${JsonEditor} text=${text} onChange=${setText} error=${check.error} />
      <p><button class="primary" disabled=${!check.result} onClick=${() => set(text).then(() => setText(null))}>Apply</button> <button onClick=${() => setText(null)}>Discard</button></p>`}</div>`;
}

// Over every view while something is in force.
export function FaultBanner() {
  const {server, isLive} = useStore();
  const active = server?.faults.list ?? [];
  if (!isLive || !server) return null;
  if (!server.serving) return html`<div class="banner bad" role="alert"><b>The service port is down.</b> Calls are refused until it listens again.</div>`;
  if (active.length === 0) return null;
  return html`<div class="banner" role="status"><b>${many(active.length, 'fault')} in force</b>
    ${active.slice(0, 3).map((entry) => html`<span>${faultText(entry.fault)} <i>(struck ${entry.struck})</i></span>`)}
    <button class="small" onClick=${() => replaceFaults(server, [])}>Clear</button></div>`;
}
