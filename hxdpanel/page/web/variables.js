// The host's variables: shown, changed in place, made.
import { listen } from './bus.js';
import { isNumber } from './check.js';
import { answer, byId, element } from './dom.js';
import { setVariable } from './server.js';

const section = byId('commands');

// False, and told why, when it was refused.
async function set(name, type, text) {
  const value = type === 'text' ? text : Number(text);
  try {
    if (type !== 'text' && !isNumber(text)) throw new Error(`${type} takes a number`);
    await setVariable(name, type, value);
    answer(section, `${name} is set`, true);
    return true;
  } catch (refusal) {
    answer(section, `${name}: ${refusal.message}`, false);
    return false;
  }
}

function item({ name, type, value }) {
  const input = element('input', { value: String(value), title: String(value), 'aria-label': `Value of ${name}`, 'data-name': name, spellcheck: false });
  input.addEventListener('change', async () => { if (!await set(name, type, input.value)) input.value = String(value); });
  return element('li', {}, element('b', { title: name }, name), element('small', {}, type), input);
}

function show({ variables }) {
  const list = byId('variables');
  const focused = list.contains(document.activeElement) ? document.activeElement : null;
  list.replaceChildren(...variables.map(item));
  const again = focused && list.querySelector(`[data-name="${CSS.escape(focused.dataset.name)}"]`);
  if (again) {
    again.value = focused.value;
    again.focus();
  }
}

export function start() {
  listen('variables', show);
  byId('variable-form').addEventListener('submit', event => {
    event.preventDefault();
    set(byId('variable-name').value.trim(), byId('variable-type').value, byId('variable-value').value);
  });
}
