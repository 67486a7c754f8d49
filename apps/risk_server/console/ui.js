// What the views are made of.

import {html, useEffect, useLayoutEffect, useReducer, useRef, useState} from './vendor/htm/standalone.module.js';
import {store} from './store.js';
import {resultOf} from './words.js';

export {html, useEffect, useLayoutEffect, useRef, useState};
export {render, useMemo, useErrorBoundary} from './vendor/htm/standalone.module.js';

// Draws anew whenever the store has changed.
export function useStore() {
  const [, draw] = useReducer((n) => n + 1, 0);
  // With the drawing: what came before an effect that runs later would not be shown.
  useLayoutEffect(() => store.subscribe(draw), []);
  return store;
}

// {value, error} of a promise that is made anew when a key changes.
export function useLoaded(load, keys) {
  const [state, setState] = useState({});
  useEffect(() => {
    let isCurrent = true;
    const set = (result) => isCurrent && setState(result);
    set({});
    Promise.resolve().then(load).then((value) => set({value}), (error) => set({error}));
    return () => { isCurrent = false; };
  }, keys);
  return state;
}

// What stands in place of a loaded value that is not there.
export function Waiting({error}) {
  return html`<p class="note dim">${error ? error.message : 'reading \u2026'}</p>`;
}

export function go(hash) {
  location.hash = hash;
}

let toastTimer = 0;

// Says something for a while. With `undo` the reader may take it back; else `then` runs in the end.
export function toast(text, {undo, then} = {}) {
  finishToast();
  store.set({toast: {text, undo, then}});
  toastTimer = setTimeout(finishToast, 6000);
}

function finishToast() {
  const then = store.toast?.then;
  endToast();
  then?.();
}

function endToast() {
  clearTimeout(toastTimer);
  store.set({toast: null});
}

export function Toast() {
  const {toast: shown} = useStore();
  const undo = () => {
    endToast();
    shown.undo();
  };
  return html`<div class=${shown ? 'toast on' : 'toast'} role="status">${shown?.text}
    ${shown?.undo && html`<button onClick=${undo}>Undo</button>`}</div>`;
}

// What the server says when it refuses.
export const complain = (error) => toast(error.message);

export async function copy(text, what) {
  try {
    await navigator.clipboard.writeText(text);
    toast(what + ' copied');
  } catch {
    toast('The browser does not allow it');
  }
}

export function download(name, bytes) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob([bytes], {type: 'application/octet-stream'}));
  link.download = name;
  link.click();
  // The browser has read the address by then.
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}

// What there is to say is told by its colour, its shape and its word.
export function Sign({kind, mark, word}) {
  return html`<span class=${'result ' + kind}><span class="shape" aria-hidden="true">${mark}</span>${word}</span>`;
}

export function Result({row}) {
  return html`<${Sign} ...${resultOf(row)} />`;
}

// Characters that change how their neighbours are shown get a visible sign; the text itself stays as it is.
const ODD = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/;
const ODD_PARTS = new RegExp(`(${ODD.source})`);

export function plain(text) {
  if (!ODD.test(text)) return text;
  const code = (c) => 'U+' + c.charCodeAt(0).toString(16).toUpperCase().padStart(4, '0');
  return text.split(ODD_PARTS).map((piece) => (ODD.test(piece) ? html`<span class="odd" data-code=${code(piece)}>${piece}</span>` : piece));
}

const OVERSCAN = 4;
const MAX_PRINTED = 2000;

// Rows of one height, of which only those in sight are in the document. Rows that come in front of a grid that is
// scrolled leave what is in sight where it is.
export function VirtualList({count, height, draw, className, label, role = 'group', selected, rowCount, onKey, head}) {
  const box = useRef(null);
  const before = useRef(count);
  const [view, setView] = useState({top: 0, size: 600});
  const [prints, setPrints] = useState(false);
  useLayoutEffect(() => {
    const watcher = new ResizeObserver(() => box.current && setView((v) => ({...v, size: box.current.clientHeight})));
    watcher.observe(box.current);
    const begin = () => setPrints(true);
    const end = () => setPrints(false);
    addEventListener('beforeprint', begin);
    addEventListener('afterprint', end);
    return () => {
      watcher.disconnect();
      removeEventListener('beforeprint', begin);
      removeEventListener('afterprint', end);
    };
  }, []);
  useLayoutEffect(() => {
    const more = count - before.current;
    before.current = count;
    if (role === 'grid' && more > 0 && box.current.scrollTop > 0) box.current.scrollTop += more * height;
  }, [count]);
  useLayoutEffect(() => {
    if (selected === undefined || selected < 0) return;
    const top = selected * height;
    const room = box.current.clientHeight - (head ? height : 0);
    if (top < box.current.scrollTop) box.current.scrollTop = top;
    else if (top + height > box.current.scrollTop + room) box.current.scrollTop = top + height - room;
  }, [selected]);
  const first = prints ? 0 : Math.max(0, Math.floor(view.top / height) - OVERSCAN);
  const last = Math.min(count, prints ? MAX_PRINTED : Math.ceil((view.top + view.size) / height) + OVERSCAN);
  const visible = [];
  for (let index = first; index < last; index += 1) visible.push(draw(index));
  return html`<div class=${'virtual ' + className} ref=${box} role=${role} aria-label=${label} aria-rowcount=${rowCount} onKeyDown=${onKey}
      tabindex=${role === 'grid' ? undefined : 0} onScroll=${({currentTarget: {scrollTop, clientHeight}}) => setView({top: scrollTop, size: clientHeight})}>
    ${head}<div role="presentation" class="tall" style=${{height: count * height + 'px'}}>
      <div role="presentation" class="window" style=${{top: first * height + 'px'}}>${visible}</div></div></div>`;
}

export function Empty({title, children}) {
  return html`<div class="empty"><h2>${title}</h2>${children}</div>`;
}

// Every plot has its figures as a table.
export function WithTable({title, columns, rows, children}) {
  const [open, setOpen] = useState(false);
  return html`<figure class="plot"><figcaption><b>${title}</b>
      <button class="small ghost" aria-expanded=${open} onClick=${() => setOpen(!open)}>${open ? 'plot' : 'table'}</button></figcaption>
    <div hidden=${open}>${children}</div>
    ${open && html`<div class="scroll" tabindex="0" role="region" aria-label=${title + ', as a table'}>
      <${Table} columns=${columns} rows=${rows.slice(0, 1000)} />${rows.length > 1000 && html`<p>and ${rows.length - 1000} more</p>`}</div>`}</figure>`;
}

// `rows` are lists of cells.
export function Table({columns, rows, className}) {
  return html`<table class=${className}><thead><tr>${columns.map((name) => html`<th>${name}</th>`)}</tr></thead>
    <tbody>${rows.map((row) => html`<tr>${row.map((cell) => html`<td>${cell ?? ''}</td>`)}</tr>`)}</tbody></table>`;
}

// A list of what there is at the left, one of it at the right. `items` are [{hash, title, says, isCurrent}].
export function Sided({title, items, children}) {
  return html`<div class="two"><nav class="side" aria-label=${title}><h1>${title}</h1><ul>${items.map(({hash, title: name, says, isCurrent}) => html`
    <li><a href=${hash} aria-current=${Boolean(isCurrent)}><b>${name}</b><span class="dim">${says}</span></a></li>`)}</ul></nav>${children}</div>`;
}
