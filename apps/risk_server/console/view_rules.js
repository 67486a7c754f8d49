// The rules in force, and others that are tried before they are set.

import {api} from './api.js';
import {CONDITIONS, placeOfFault, ruleForCall} from './rules_text.js';
import {store} from './store.js';
import {Empty, html, Result, Sign, Table, toast, useEffect, useState, useStore, Waiting} from './ui.js';
import {many, RISKS, riskWord} from './words.js';

const NUMBERS = ['amountAtLeast', 'amountBelow', 'nth', 'everyNth'];

// The draft outlives the view, so that a look at a call does not lose it.
const draft = {text: null, version: null, before: []};
const asText = (rules) => JSON.stringify(rules, null, 1);

export function RulesView({from, risk}) {
  const {server, isLive} = useStore();
  const [, redraw] = useState(0);
  const [check, setCheck] = useState({});
  const [asJson, setAsJson] = useState(false);
  const change = (values) => {
    Object.assign(draft, values);
    redraw((n) => n + 1);
  };
  const load = async () => {
    const {value, version} = await api.read('rules');
    change({version, text: asText(value)});
  };
  useEffect(() => {
    if (isLive) (draft.text === null ? load() : Promise.resolve()).then(() => addFromCall(from, risk, change));
  }, [from, risk, isLive]);
  useEffect(() => watchCheck('rules', draft.text, setCheck), [draft.text, server?.calls]);
  if (!isLive) return html`<${Empty} title="A capture has no rules in force" />`;
  if (draft.text === null || !server) return html`<${Waiting} />`;
  const rules = parsed(draft.text);
  const version = `"${server.rules.version}"`;
  const isOld = draft.version !== version;
  const apply = async () => {
    try {
      const before = asText((await api.read('rules')).value);
      change({version: await api.replace('rules', draft.text, version), before: [...draft.before, before]});
      toast('The rules are in force; verdicts are counted anew');
    } catch (error) {
      setCheck({error: error.message});
    }
  };
  return html`<div class="page">
    <header class="bar"><h1>Rules</h1><${CheckSign} check=${check} what="verdicts" /><span class="grow"></span>
      <button aria-pressed=${asJson} onClick=${() => setAsJson(!asJson)}>JSON</button>
      ${draft.before.length > 0 && html`<button onClick=${() => change({text: draft.before.at(-1), before: draft.before.slice(0, -1)})}>Undo</button>`}
      <button onClick=${load}>Discard</button><button class="primary" disabled=${!check.result} onClick=${apply}>Apply</button></header>
    <p class="dim">The first rule whose conditions all hold gives the verdict. Setting rules counts calls anew.</p>
    ${isOld && html`<p class="warnbar" role="alert">The rules were changed by someone else meanwhile: Discard takes theirs, Apply replaces them.</p>`}
    ${asJson || !rules ? html`<${JsonEditor} text=${draft.text} onChange=${(text) => change({text})} error=${check.error} />` :
      html`<${RuleList} rules=${rules} fault=${placeOfFault(check.error)} onChange=${(list) => change({text: asText(list)})} hits=${isOld ? [] : server.rules.hits} />`}
    ${check.result?.changed > 0 && html`<${Changes} result=${check.result} />`}</div>`;
}

function addFromCall(from, risk, change) {
  const row = store.find(Number(from));
  const rules = parsed(draft.text);
  if (from === undefined || !row || !rules) return;
  change({text: asText([ruleForCall(row, risk ?? riskWord(Math.min(3, (row.risk ?? 0) + 1))), ...rules])});
  // The address must not add it again.
  history.replaceState(null, '', '#/rules');
}

function parsed(text) {
  try {
    const value = JSON.parse(text);
    return Array.isArray(value) ? value : null;
  } catch {
    return null;
  }
}

// Asks the server what it would say, a moment after the last change.
export function watchCheck(name, text, setCheck) {
  if (text === null) return undefined;
  let isCurrent = true;
  const set = (check) => isCurrent && setCheck(check);
  const timer = setTimeout(() => api.check(name, text).then((result) => set({result}), (error) => set({error: error.message})), 150);
  return () => {
    isCurrent = false;
    clearTimeout(timer);
  };
}

export function CheckSign({check: {error, result}, what}) {
  if (!error && !result) return html`<span class="dim">checking \u2026</span>`;
  return html`<span role="status">${error ? html`<${Sign} kind="bad" mark="\u2716" word=${error} />` : html`<${Sign} kind="ok" mark="\u2714" word="valid" />`}</span>
    ${result && html`<span class="replay dim">replay over the last ${result.replayed} ${what}: ${result.changed} would change</span>`}`;
}

export function JsonEditor({text, onChange, error}) {
  return html`<textarea spellcheck=${false} aria-label="JSON" aria-invalid=${Boolean(error)} rows="18" value=${text} onInput=${({currentTarget}) => onChange(currentTarget.value)}></textarea>`;
}

function RuleList({rules, fault, onChange, hits}) {
  const move = (index, to) => {
    const list = rules.filter((_, i) => i !== index);
    list.splice(to, 0, rules[index]);
    onChange(list);
  };
  const button = (label, sign, act, disabled) => html`<button class="small ghost" aria-label=${label} disabled=${disabled} onClick=${act}>${sign}</button>`;
  return html`<ol class="rules">${rules.map((rule, index) => html`<li key=${index} class=${fault.index === index ? 'wrong' : ''}>
      <span class="hits" title="how often it decided">${hits[index]}</span>
      <${RuleFields} rule=${rule} number=${index + 1} fault=${fault.index === index ? fault : {}} onChange=${(r) => onChange(rules.map((old, i) => (i === index ? r : old)))} />
      <span class="grow"></span>${button(`Rule ${index + 1} up`, '\u2191', () => move(index, index - 1), index === 0)}
      ${button(`Rule ${index + 1} down`, '\u2193', () => move(index, index + 1), index === rules.length - 1)}
      ${button(`Remove rule ${index + 1}`, '\u2715', () => onChange(rules.filter((_, i) => i !== index)))}</li>`)}</ol>
    <button onClick=${() => onChange([{risk: 'LOW'}, ...rules])}>Add a rule in front</button>`;
}

function RuleFields({rule, number, fault, onChange}) {
  const told = html`<em class="fieldfault" role="alert">${fault.reason}</em>`;
  if (rule === null || typeof rule !== 'object') return html`<code>${JSON.stringify(rule)}</code>${told}`;
  const {risk, ...conditions} = rule;
  const set = (values) => onChange({...values, risk});
  const put = (key, value) => set({...conditions, [key]: value});
  const drop = (key) => set(Object.fromEntries(Object.entries(conditions).filter(([k]) => k !== key)));
  const words = RISKS.map(([word]) => word);
  return html`<span class="fields">
    ${Object.entries(conditions).map(([key, value]) => html`<label key=${key}>${key} <input value=${typeof value === 'string' ? value : JSON.stringify(value)} size=${Math.max(5, String(value).length)}
        aria-invalid=${fault.key === key} onInput=${({currentTarget}) => put(key, valueFrom(key, currentTarget.value))} />
      <button class="small ghost" aria-label=${`Drop ${key}`} onClick=${() => drop(key)}>\u2715</button>${fault.key === key && told}</label>`)}
    <select aria-label=${`Further condition of rule ${number}`} value="" onChange=${({currentTarget}) => put(currentTarget.value, NUMBERS.includes(currentTarget.value) ? 1 : '')}>
      <option value="">+ condition</option>${CONDITIONS.filter((c) => !(c in rule)).map((c) => html`<option value=${c}>${c}</option>`)}</select> \u2192
    <select aria-label=${`Risk of rule ${number}`} aria-invalid=${fault.key === 'risk'} value=${risk} onChange=${({currentTarget}) => onChange({...conditions, risk: currentTarget.value})}>
      ${[...new Set([...words, risk])].map((word) => html`<option value=${word}>${word}</option>`)}</select>
    ${fault.reason && !(fault.key in conditions) && told}</span>`;
}

// Numbers where they are meant; what is none goes as it is, for the server to say what is wrong.
function valueFrom(key, text) {
  return NUMBERS.includes(key) && text.trim() !== '' && !Number.isNaN(Number(text)) ? Number(text) : text;
}

function Changes({result}) {
  const as = (risk) => html`<${Result} row=${{risk, status: 200}} />`;
  return html`<h2>${many(result.changed, 'verdict')} would change</h2><${Table} columns=${['call', 'now', 'then', 'by rule']} rows=${result.changes.map((change) => [
    html`<a href=${'#/x/' + change.id}>#${change.id}</a>`, as(change.from), as(change.to), change.rule === undefined ? 'none' : change.rule + 1])} />`;
}
