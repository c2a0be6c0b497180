// The stream of events. It reconnects by itself; after each connection everything is asked anew.
import { announce, calmed, listen, publish } from './bus.js';
import { ask } from './server.js';

const RETRY_MS = 1000;
const EVENTS = ['channels', 'did', 'acted', 'log', 'screen', 'restarted'];
let restartsSeen;

function connection(state, text) {
  publish('connection', { state, text });
}

async function fetchState(topic, path) {
  try {
    publish(topic, await ask(path));
  } catch {
    // The stream tells when there is no connection, and asks again when there is.
  }
}

const fetchPanel = () => fetchState('panel', '/api/panel');
const fetchTime = calmed(() => fetchState('time', '/api/time'), 300);
const fetchFaults = calmed(() => fetchState('faults', '/api/faults'), 100);
const fetchVariables = calmed(() => fetchState('variables', '/api/variables'), 100);

function greeted(hello) {
  publish('hello', hello);
  const rebooted = restartsSeen !== undefined && hello.restarts !== restartsSeen;
  restartsSeen = hello.restarts;
  connection('live', rebooted ? 'live, panel was restarted' : 'live');
  fetchPanel();
  fetchTime();
  fetchVariables();
  announce('screen');
}

function open() {
  const stream = new EventSource('/api/events');
  stream.addEventListener('hello', event => greeted(JSON.parse(event.data)));
  stream.addEventListener('panel', event => publish('panel', JSON.parse(event.data)));
  for (const name of EVENTS)
    stream.addEventListener(name, event => announce(name, JSON.parse(event.data)));
  stream.onerror = () => {
    connection('lost', 'no connection, trying again');
    if (stream.readyState === EventSource.CLOSED) setTimeout(open, RETRY_MS);
  };
}

export function start() {
  connection('connecting', 'connecting');
  listen('restarted', () => connection('restarting', 'the panel restarts'));
  listen('panel', fetchFaults);
  for (const topic of ['acted', 'did']) listen(topic, fetchTime);
  listen('acted', fetchVariables);
  fetchState('help', '/api/help');
  open();
}
