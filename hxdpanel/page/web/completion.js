// The console's completion for an input: candidates replace the word at the line's end.
import { byId, element } from './dom.js';
import { ask } from './server.js';

const SHOWN = 30;
const word = line => /[^ \t(,]*$/.exec(line)[0];

function commonPrefix(texts) {
  let end = texts[0].length;
  for (const text of texts)
    while (text.slice(0, end).toLowerCase() !== texts[0].slice(0, end).toLowerCase()) --end;
  return texts[0].slice(0, end);
}

export class Completion {
  constructor(input, onChange) {
    this.input = input;
    this.list = byId(input.getAttribute('aria-controls'));
    this.onChange = onChange;
    this.candidates = [];
    this.chosen = -1;
    input.addEventListener('blur', () => this.close());
    this.list.addEventListener('mousedown', event => this.clicked(event));
  }

  get isOpen() { return !this.list.hidden; }

  // Asked for at every change; an answer that comes too late is dropped.
  async suggest() {
    const line = this.input.value;
    if (line.trim() === '') return this.close();
    const answer = await ask(`/api/complete?line=${encodeURIComponent(line)}`).catch(() => ({ candidates: [] }));
    if (this.input.value !== line || document.activeElement !== this.input) return;
    const candidates = answer.candidates;
    const isComplete = candidates.length === 1 && candidates[0].toLowerCase() === word(line).toLowerCase();
    this.show(isComplete ? [] : candidates);
  }

  show(candidates) {
    this.candidates = candidates;
    this.chosen = -1;
    this.list.replaceChildren(...candidates.slice(0, SHOWN).map((text, i) =>
      element('li', { role: 'option', id: `completion-${i}`, 'aria-selected': 'false' }, text)));
    this.list.hidden = candidates.length === 0;
    this.input.setAttribute('aria-expanded', this.isOpen);
    this.input.removeAttribute('aria-activedescendant');
  }

  close() { this.show([]); }

  choose(step) {
    const options = [...this.list.children];
    this.chosen = (this.chosen + step + options.length) % options.length;
    options.forEach((option, i) => option.setAttribute('aria-selected', i === this.chosen));
    options[this.chosen].scrollIntoView({ block: 'nearest' });
    this.input.setAttribute('aria-activedescendant', options[this.chosen].id);
  }

  take(text) {
    const line = this.input.value;
    this.input.value = line.slice(0, line.length - word(line).length) + text;
    this.onChange();
  }

  // As in a shell: what all candidates begin with, then one after the other. False: Tab leaves.
  tab(isBack) {
    if (!this.isOpen) return false;
    const common = commonPrefix(this.candidates);
    if (this.chosen < 0 && common.length > word(this.input.value).length) this.take(common);
    else this.choose(isBack ? -1 : 1);
    return true;
  }

  // Whether there was a chosen candidate to take.
  accept() {
    if (this.chosen < 0) return false;
    this.take(this.candidates[this.chosen]);
    return true;
  }

  clicked(event) {
    event.preventDefault();  // the focus stays in the line
    if (event.target.role === 'option') this.take(event.target.textContent);
  }
}
