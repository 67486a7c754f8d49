// Two bodies beside each other, key by key.

import {differences, placeText, VOLATILE} from './diff.js';
import {store} from './store.js';
import {Empty, html, plain, Table, useLoaded, useMemo, useState, useStore, Waiting} from './ui.js';
import {textOf} from './view_exchange.js';
import {callName} from './words.js';

const MAX_SHOWN = 2000;

export function DiffView({left, right}) {
  const [part, setPart] = useState('request');
  const [ignores, setIgnores] = useState(true);
  const {masked} = useStore();
  const rows = [left, right].map((id) => store.find(Number(id)));
  const {value, error} = useLoaded(() => Promise.all(rows.map(async (row) => row && textOf(await store.body(row.id, part)))), [left, right, part, masked]);
  const found = useMemo(() => value?.every((text) => typeof text === 'string') && differences(...value, ignores ? VOLATILE : undefined), [value, ignores]);
  if (!rows.every(Boolean)) return html`<${Empty} title="One of the two is not kept any more" />`;
  if (!value) return html`<${Waiting} error=${error} />`;
  const cell = (text, kind) => html`<code class=${text === undefined ? 'dim' : kind}>${plain(text?.slice(0, MAX_SHOWN) ?? 'missing')}</code>`;
  return html`<div class="page"><header class="bar"><h1>#${left} ${callName(rows[0])} and #${right} ${callName(rows[1])}</h1><span class="grow"></span>
      ${['request', 'reply'].map((name) => html`<button aria-pressed=${part === name} onClick=${() => setPart(name)}>${name}</button>`)}
      <label><input type="checkbox" checked=${ignores} onChange=${() => setIgnores(!ignores)} /> ignore what changes with every call</label></header>
    <p class="dim">${found ? found.length + ' differences' : 'One of the bodies is no text.'}</p>
    ${found.length > 0 && html`<${Table} className="wide diff" columns=${['place', '#' + left, '#' + right]} rows=${found.map((d) => [html`<code>${plain(placeText(d.place))}</code>`, cell(d.left, 'left'), cell(d.right, 'right')])} />`}</div>`;
}
