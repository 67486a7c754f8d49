// The server's control path, as the page asks it. Everything is of the page's own origin.

const TOKEN_KEY = 'console-token';

// The token stands behind the "#" of the address that the server printed; it is kept for this tab.
export function takeToken() {
  const match = /^#token=([^&]*)/.exec(location.hash);
  if (!match) return;
  sessionStorage.setItem(TOKEN_KEY, decodeURIComponent(match[1]));
  history.replaceState(null, '', location.pathname);
}

async function call(path, options = {}) {
  const token = sessionStorage.getItem(TOKEN_KEY);
  const response = await fetch('/control/' + path, {...options, headers: {...options.headers, ...(token && {Authorization: 'Bearer ' + token})}});
  if (response.ok) return response;
  const reason = (await response.json().catch(() => ({}))).error;
  throw Object.assign(new Error(reason ?? 'status ' + response.status), {status: response.status});
}

const ask = async (path, options) => (await call(path, options)).json();
const post = (body, headers) => ({method: 'POST', body, headers});

// An error of any of these has the server's reason and its `status`.
export const api = {
  events: (after, masked, signal) => call(`events?after=${after}&masked=${Number(masked)}`, {signal}),
  changes: (after, masked) => ask(`exchanges?after=${after}&masked=${Number(masked)}`),
  body: async (id, part, masked) => new Uint8Array(await (await call(`exchanges/${id}/${part}?masked=${Number(masked)}`)).arrayBuffer()),
  search: async (text) => (await ask('exchanges/search?text=' + encodeURIComponent(text))).ids,
  clear: () => call('exchanges', {method: 'DELETE'}),
  restart: (downMs) => call('restart', post(JSON.stringify({downMs}))),

  // {value, version}: what stands under "rules" or "faults".
  async read(name) {
    const response = await call(name);
    return {value: await response.json(), version: response.headers.get('ETag')};
  },
  // The new version; only the given one is replaced.
  async replace(name, value, version) {
    const response = await call(name, post(typeof value === 'string' ? value : JSON.stringify(value), {'If-Match': version}));
    return response.headers.get('ETag');
  },
  check: (name, text) => ask(name + '/check', post(text)),
  importCapture: (bytes, masked) => ask('import?masked=' + Number(masked), post(bytes)),
  exportCapture: (format, ids, plain) => call(`export?format=${format}&plain=${Number(plain)}`, post(ids ? JSON.stringify({ids}) : '')),
};
