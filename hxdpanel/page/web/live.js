// The stream of events. It reconnects by itself; after each connection the server tells what was
// missed, or everything anew, and what is not told is asked.
import { announce, calmed, listen, publish, state } from './bus.js';
import { timeOfDay } from './dom.js';
import { ask } from './server.js';

const RETRY_MS = 1000;
const EVENTS = ['channels', 'did', 'acted', 'log', 'screen', 'restarted'];
let restarts;

function connection(isThere, text) {
  publish('connection', { state: isThere, text });
}

async function fetchState(topic, path) {
  try {
    publish(topic, await ask(path));
  } catch {
    // The stream tells when there is no connection, and asks again when there is.
  }
}

const fetchTime = calmed(() => fetchState('time', '/api/time'), 300);
const fetchVariables = calmed(() => fetchState('variables', '/api/variables'), 100);

function askAnew() {
  fetchTime();
  fetchVariables();
}

function greeted(hello) {
  for (const topic of ['help', 'faults'])
    if (!state(topic) || state('hello')?.version !== hello.version) fetchState(topic, `/api/${topic}`);
  const isOther = restarts !== undefined && hello.restarts !== restarts;
  restarts = hello.restarts;
  publish('hello', hello);
  connection('live', isOther ? 'live, restarted meanwhile' : 'live');
  askAnew();
}

function restarted(event) {
  restarts = event.restarts;
  connection('live', `live, ${event.why} at ${timeOfDay(event.time)}`);
  askAnew();
}

function open() {
  const stream = new EventSource('/api/events');
  stream.addEventListener('hello', event => greeted(JSON.parse(event.data)));
  stream.addEventListener('panel', event => publish('panel', JSON.parse(event.data)));
  for (const name of EVENTS)
    stream.addEventListener(name, event => announce(name, JSON.parse(event.data)));
  stream.onerror = async () => {
    connection('lost', 'no connection, trying again');
    if (stream.readyState !== EventSource.CLOSED) return;
    setTimeout(open, RETRY_MS);
    // Refused, without a reason that a stream could tell; the server is there if it answers this.
    if (await ask('/api').then(() => true, () => false)) connection('lost', 'refused, too many listen; trying again');
  };
}

export function start() {
  connection('connecting', 'connecting');
  listen('restarted', restarted);
  for (const topic of ['acted', 'did']) listen(topic, fetchTime);
  listen('acted', fetchVariables);
  open();
}
