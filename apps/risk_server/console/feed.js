// The rows as they come. One tab reads the server's stream and tells the others, since a browser has six connections for
// all of them; each tab knows its own place in the changes, so none misses what another one skipped.

import {api} from './api.js';
import {EventReader} from './sse.js';

const POLL = 1000;       // milliseconds; where the server has no stream left
const RETRY = [300, 600, 1200, 2500, 5000];

const runOf = (after) => after.split(':')[0];
const numberOf = (after) => Number(after.split(':')[1] ?? 0);

// `sink` has takeBatch({rows, oldest, gap, first}), takeState(state) and takeStatus(word): 'live', 'polling', 'offline', or
// 'locked' without the token.
export class Feed {
  constructor(sink, masked) {
    Object.assign(this, {sink, masked, after: '', failures: 0, name: 'console-feed' + (masked ? '-masked' : ''), ended: new AbortController()});
  }

  start() {
    this.channel = new BroadcastChannel(this.name);
    this.channel.onmessage = ({data}) => this.hear(data);
    this.takeTurn().catch(() => {});
    return this;
  }

  stop() {
    this.ended.abort();
    this.channel.close();
  }

  // Leads if nobody does. Else reads what is there by itself, listens, and leads when the leader's tab is closed.
  async takeTurn() {
    const {signal} = this.ended;
    const isLed = await navigator.locks.request(this.name, {ifAvailable: true}, (lock) => (lock ? this.lead() : true));
    if (!isLed || signal.aborted) return;
    this.catchUp().then(() => this.sink.takeStatus('live'), (error) => this.fail(error));
    await navigator.locks.request(this.name, {signal}, () => this.lead());
  }

  // Reads and tells until the tab is closed.
  async lead() {
    while (!this.ended.signal.aborted) {
      try {
        await this.readStream();
      } catch (error) {
        if (this.ended.signal.aborted) return;
        if (error.status === 503) await this.poll().catch((e) => this.fail(e));
        else this.fail(error);
      }
      await this.pause(RETRY[Math.min(this.failures, RETRY.length - 1)]);
    }
  }

  fail({status}) {
    this.failures += 1;
    this.tell({kind: 'status', status: status === 401 ? 'locked' : 'offline'});
  }

  pause(milliseconds) {
    return new Promise((resolve) => {
      setTimeout(resolve, milliseconds);
      this.ended.signal.addEventListener('abort', resolve, {once: true});
    });
  }

  async readStream() {
    let at = this.after;
    const response = await api.events(at, this.masked, this.ended.signal);
    this.failures = 0;
    this.tell({kind: 'status', status: 'live'});
    let gap = false;
    const events = new EventReader(({name, id, data}) => {
      const value = JSON.parse(data);
      if (name === 'state') this.tell({kind: 'state', state: value});
      if (name === 'gap') gap = true;
      if (name !== 'rows') return;
      this.tell({kind: 'rows', from: at, to: id, ...value, gap});
      at = id;
      gap = false;
    });
    for await (const bytes of piecesOf(response.body)) events.push(bytes);
    throw new Error('the stream ended');
  }

  async poll() {
    this.tell({kind: 'status', status: 'polling'});
    await this.readOn((message) => this.tell(message));
    this.failures = 0;
    await this.pause(POLL);
  }

  // At the beginning, and when a batch of the leader is not the next one.
  catchUp() {
    this.catching ??= this.readOn((message) => this.hear(message)).finally(() => { this.catching = null; });
    return this.catching;
  }

  // Asks until there is nothing more.
  async readOn(handle) {
    for (let more = true; more;) {
      const from = this.after;
      const {after: to, state, ...batch} = await api.changes(from, this.masked);
      more = batch.more;
      handle({kind: 'state', state});
      handle({kind: 'rows', from, to, ...batch});
    }
  }

  tell(message) {
    this.hear(message);
    this.channel.postMessage(message);
  }

  hear(message) {
    if (message.kind === 'state') this.sink.takeState(message.state);
    if (message.kind === 'status') this.sink.takeStatus(message.status);
    if (message.kind !== 'rows' || !this.isNews(message)) return;
    if (this.fits(message)) this.take(message);
    else this.catchUp().catch(() => {});
  }

  isNews({to}) {
    return runOf(to) !== runOf(this.after) || numberOf(to) > numberOf(this.after);
  }

  // Whether nothing lies between what is known and the batch, which may begin earlier than that.
  fits({from, to}) {
    if (runOf(to) !== runOf(this.after)) return from === this.after;
    return runOf(from) !== runOf(to) || numberOf(from) <= numberOf(this.after);
  }

  take({to, rows, oldest, gap}) {
    // Numbers of another run of the server: what was there is gone.
    const first = runOf(this.after) !== runOf(to);
    this.after = to;
    this.sink.takeBatch({rows, oldest, gap, first});
  }
}

async function* piecesOf(body) {
  const reader = body.getReader();
  for (;;) {
    const {done, value} = await reader.read();
    if (done) return;
    yield value;
  }
}
