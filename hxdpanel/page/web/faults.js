// Functions of the platform that can fail or be slow: one is chosen in the table and acted on above it.
import { listen, state } from './bus.js';
import { answer, byId, element, setText } from './dom.js';
import { act } from './hardware.js';

const section = byId('faults');
const rows = new Map();

const field = id => byId(id).value.trim();
const times = () => (field('fault-times') === '' ? '' : `,${field('fault-times')}`);
const ACTIONS = {
  'fail': name => `fail ${name} ${field('fault-result')}${times()}`,
  'slow': name => `slow ${name} ${field('fault-delay')}${times()}`,
  'mend': name => `mend ${name}`,
};

function actOnChosen(event) {
  const chosen = section.querySelector('[name="function"]:checked');
  if (chosen) act(section, ACTIONS[event.target.id](chosen.value));
  else answer(section, 'choose a function first', false);
}

function buildRow({ function: name }) {
  const radio = element('input', { type: 'radio', name: 'function', value: name });
  const shown = element('td');
  const hits = element('td');
  const row = element('tr', {}, element('th', { scope: 'row', title: name }, element('label', {}, radio, name)), shown, hits);
  rows.set(name, { row, shown, hits });
  return row;
}

function stateText({ result, timesLeft: left, slowMs }) {
  const what = result !== null ? `fails: ${result}` : slowMs > 0 ? `${slowMs} ms slower` : '';
  return what && left !== null ? `${what}, ${left || 'no'} more` : what;
}

function build({ functions }) {
  section.querySelector('tbody').replaceChildren(...functions.map(buildRow));
  if (state('panel')) show(state('panel'));
}

// The panel tells of those that are not as they were made.
function show({ failures }) {
  for (const [name, { row, shown, hits }] of rows) {
    const failure = failures.find(one => one.function === name);
    setText(shown, failure ? stateText(failure) : '');
    shown.title = shown.textContent;
    setText(hits, failure?.hits ? String(failure.hits) : '');
    row.dataset.set = shown.textContent !== '';
  }
}

export function start() {
  for (const verb of Object.keys(ACTIONS)) byId(verb).addEventListener('click', actOnChosen);
  byId('mend-all').addEventListener('click', () => act(section, 'mend all'));
  listen('faults', build);
  listen('panel', show);
}
