// The server's answers. What it refuses throws a Refusal with its message and status.
const PATIENCE_MS = 180000;  // a synchronisation whose name servers do not answer takes minutes

export class Refusal extends Error {
  constructor(message, status) {
    super(message);
    this.status = status;
  }
}

async function request(method, path, body) {
  const options = { method, signal: AbortSignal.timeout(PATIENCE_MS) };
  if (body !== undefined) {
    options.headers = { 'Content-Type': 'application/json' };
    options.body = JSON.stringify(body);
  }
  const response = await fetch(path, options).catch(() => {
    throw new Refusal('the panel does not answer');
  });
  const answer = await response.json().catch(() => ({}));
  if (!response.ok) throw new Refusal(answer.message ?? `HTTP ${response.status}`, answer.status);
  return answer;
}

// What acts waits for what was asked for before it: on connections of their own it might be overtaken.
let last = Promise.resolve();
function act(...asked) {
  const answer = last.then(() => request(...asked));
  last = answer.catch(() => {});
  return answer;
}

export const ask = path => request('GET', path);
export const run = line => act('POST', '/api/run', { line });
export const writeChannel = (number, value) => act('PUT', `/api/channels/${number}`, { value });
export const setVariable = (name, type, value) =>
  act('PUT', `/api/variables/${encodeURIComponent(name)}`, { type, value });
