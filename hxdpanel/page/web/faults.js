// Functions of the platform that can fail or be slow: one is chosen in the table and acted on above it.
import { listen } from './bus.js';
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
  const state = element('td');
  const hits = element('td');
  const row = element('tr', {}, element('th', { scope: 'row', title: name }, element('label', {}, radio, name)), state, hits);
  rows.set(name, { row, state, hits });
  return row;
}

function stateText({ result, timesLeft: left, slowMs }) {
  const what = result !== null ? `fails: ${result}` : slowMs > 0 ? `${slowMs} ms slower` : '';
  return what && left !== null ? `${what}, ${left || 'no'} more` : what;
}

function show({ functions }) {
  if (rows.size === 0) section.querySelector('tbody').replaceChildren(...functions.map(buildRow));
  for (const one of functions) {
    const { row, state, hits } = rows.get(one.function);
    setText(state, stateText(one));
    state.title = state.textContent;
    setText(hits, one.hits ? String(one.hits) : '');
    row.dataset.set = state.textContent !== '';
  }
}

export function start() {
  for (const verb of Object.keys(ACTIONS)) byId(verb).addEventListener('click', actOnChosen);
  byId('mend-all').addEventListener('click', () => act(section, 'mend all'));
  listen('faults', show);
}
