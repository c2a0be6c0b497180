// The console's line: history, completion, help beside it, results below.
import { calmed } from './bus.js';
import { Completion } from './completion.js';
import { byId, prepend } from './dom.js';
import { showReference, start as startReference } from './reference.js';
import { refusedItem, resultItem } from './results.js';
import { run } from './server.js';

const RESULTS = 100;
const HISTORY = 200;
const HISTORY_KEY = 'hxdpanel.history';

const input = byId('command');
const history = JSON.parse(localStorage.getItem(HISTORY_KEY)) ?? [];
let place = history.length;
let begun = '';

function remember(line) {
  if (history.at(-1) !== line) history.push(line);
  history.splice(0, history.length - HISTORY);
  localStorage.setItem(HISTORY_KEY, JSON.stringify(history));
  place = history.length;
}

function recall(step) {
  if (place === history.length) begun = input.value;
  place = Math.min(Math.max(place + step, 0), history.length);
  input.value = history[place] ?? begun;
  showReference(input.value);
}

async function runLine(line) {
  remember(line);
  const item = await run(line).then(answer => resultItem(line, answer), refusal => refusedItem(line, refusal));
  prepend(byId('results'), item, RESULTS);
}

function submit(event) {
  event.preventDefault();
  const line = input.value.trim();
  if (line === '') return;
  input.value = '';
  completion.close();
  runLine(line);
}

const KEYS = {
  Tab: event => completion.tab(event.shiftKey),
  Escape: () => completion.isOpen && (completion.close(), true),
  Enter: () => completion.accept(),
  ArrowDown: () => (completion.chosen >= 0 ? completion.choose(1) : recall(1), true),
  ArrowUp: () => (completion.chosen >= 0 ? completion.choose(-1) : recall(-1), true),
};

const suggest = calmed(() => completion.suggest(), 80);
const changed = () => {
  showReference(input.value);
  suggest();
};
const completion = new Completion(input, changed);

export function start() {
  startReference();
  input.addEventListener('input', changed);
  input.addEventListener('keydown', event => KEYS[event.key]?.(event) && event.preventDefault());
  byId('command-form').addEventListener('submit', submit);
}
