// Building elements. What comes from outside only ever becomes text.
export const byId = id => document.getElementById(id);

// element('button', { type: 'button', className: 'small', onclick: run, 'aria-label': 'Run' }, 'Run')
export function element(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key in made) made[key] = value;
    else made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

export function button(text, onclick, properties = {}) {
  return element('button', { type: 'button', onclick, ...properties }, text);
}

// Changes nothing when the text is there already: a selection in it stays.
export function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

export function statusText(status) {
  return `status ${status.code} (${status.meaning})`;
}

export function timeOfDay(iso) {
  return /T(\d\d:\d\d:\d\d)/.exec(iso)?.[1] ?? iso;
}

// Puts the newest on top and drops what is beyond the limit.
export function prepend(list, item, limit) {
  list.prepend(item);
  while (list.childElementCount > limit) list.lastElementChild.remove();
}

// The line at a section's end that says how the last action went.
export function answer(section, text, isGood) {
  const line = section.querySelector('.answer');
  setText(line, text);
  line.dataset.good = isGood;
}

// Arrow keys go from one of the elements to the next; only one is reached by Tab.
export function roving(container, selector) {
  const steps = { ArrowDown: 1, ArrowUp: -1 };
  const all = () => [...container.querySelectorAll(selector)];
  const only = chosen => all().forEach(one => { one.tabIndex = one === chosen ? 0 : -1; });
  only(all()[0]);
  container.addEventListener('focusin', event => event.target.matches(selector) && only(event.target));
  container.addEventListener('keydown', event => {
    const list = all();
    const next = list[list.indexOf(event.target) + (steps[event.key] ?? NaN)];
    if (!event.target.matches(selector) || !next) return;
    event.preventDefault();
    next.focus();
  });
}
