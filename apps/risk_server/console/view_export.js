// Captures in and out.

import {api} from './api.js';
import {store} from './store.js';
import {complain, download, html, toast, useState, useStore} from './ui.js';
import {bytes, many} from './words.js';

const MAX_IMPORT = 16 << 20;

export function ExportView({filtered: {rows, total}}) {
  const {isLive, isReport} = useStore();
  const [{format, plain, onlyShown}, set] = useState({format: 'jsonl', plain: false, onlyShown: false});
  const choose = (values) => set({format, plain, onlyShown, ...values});
  const run = async () => {
    const response = await api.exportCapture(format, onlyShown ? rows.map((row) => row.id) : null, plain);
    const content = await response.arrayBuffer();
    download('capture.' + format, content);
    toast(bytes(content.byteLength) + ' exported');
  };
  const option = (text, isOn, values) => html`<label><input type="radio" checked=${isOn} onChange=${() => choose(values)} /> ${text}</label>`;
  return html`<div class="page narrow">
    ${isLive ? html`<h1>Export</h1><fieldset><legend>What</legend>${option(`everything that is kept (${many(total, 'exchange')})`, !onlyShown, {onlyShown: false})}
      ${option(`what the filter leaves (${rows.length})`, onlyShown, {onlyShown: true})}</fieldset>
    <fieldset><legend>As</legend>${option('JSON lines, as the log', format === 'jsonl', {format: 'jsonl'})}${option('HAR 1.2', format === 'har', {format: 'har'})}</fieldset>
    <fieldset><legend>Personal data</legend><label><input type="checkbox" checked=${plain} onChange=${() => choose({plain: !plain})} /> keep it as it was sent</label>
      <span class="dim">else each value becomes a stand-in that is the same wherever it stands</span></fieldset>
    <p><button class="primary" disabled=${total === 0} onClick=${() => run().catch(complain)}>Export</button></p>` : html`<p class="dim">This is a capture: save the file that it came from.</p>`}
    ${!isReport && html`<h1>Import</h1><p class="dim">A log of this server (JSON lines) or a HAR file of any proxy, up to ${bytes(MAX_IMPORT)}, is shown in place of the live calls; nothing of it is kept.</p>
    <p><input type="file" aria-label="Capture" accept=".jsonl,.har,.json,.log" onChange=${({currentTarget}) => importFile(currentTarget.files[0]).catch(complain)} /></p>`}</div>`;
}

async function importFile(file) {
  if (!file) return;
  if (file.size > MAX_IMPORT) throw new Error(`${file.name} is larger than ${bytes(MAX_IMPORT)}`);
  const {entries, skipped} = await api.importCapture(await file.arrayBuffer(), store.masked);
  store.openCapture({name: file.name, entries});
  toast(`${many(entries.length, 'exchange')} read${skipped ? `, ${skipped} entries are no service calls` : ''}`);
  location.hash = '/live';
}
