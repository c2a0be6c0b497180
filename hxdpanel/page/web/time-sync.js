// Time synchronisation: what is set, what the last attempts did, and why one failed.
import { listen } from './bus.js';
import { byId, element, prepend, setText, timeOfDay } from './dom.js';
import { act } from './hardware.js';
import { present } from './readings.js';

const [SWITCH, MODE, PERIOD, FIRST_SERVER, LAST_SERVER] = [12, 13, 14, 15, 18];
const ATTEMPTS = 30;

// Lines that the driver prints, and what each means for the attempt; after the last colon of some
// stands the server.
const BEGIN = /execNtp-/;
const BEGUN = 'a synchronisation begins';
const REASONS = [
  [BEGIN, () => BEGUN],
  [/tryToSend:187.*?([^:]*)$/, server => `${server}: there is no route to it`],
  [/tryToSend:214.*?([^:]*)$/, server => `${server}: no answer within 2 s; wrong address, or UDP port 123 is blocked`],
  [/tryToSend:220.*?([^:]*)$/, server => `${server}: stopped while it waited for the answer`],
  [/tryToSend:208.*?([^:]*)$/, server => `${server}: waiting for the answer failed`],
  [/getServerTime:305/, () => 'a server’s answer was empty'],
  [/date is :(.*)/, time => `a server answered, the clocks are set to ${time.trim()}`],
];
const NOBODY_ASKED = 'failed before a server was asked: no ping was answered, or the name servers do not know the names';

let told = new Set();  // of the present attempt
let askedAt = null;  // when ExecNTP ran whose result has not been seen

const value = number => present.get(number)?.value;

function servers() {
  const list = [];
  for (let number = FIRST_SERVER; number <= LAST_SERVER; ++number) list.push(value(number) ?? '');
  return list;
}

function settingsHint() {
  if (value(SWITCH) !== 1) return 'Switched off: a synchronisation does nothing and reports 0.';
  if (servers().every(server => server === '')) return 'There is no server: nobody to ask.';
  return 'Servers are asked together; the first answer counts.';
}

function showSettings() {
  if (present.size === 0) return;
  byId('time-switch').setAttribute('aria-checked', value(SWITCH) === 1);
  setText(byId('time-switch'), value(SWITCH) === 1 ? 'On' : 'Off');
  setText(byId('time-mode'), value(MODE) === 1 ? `every ${value(PERIOD)} h` : 'on demand only');
  const list = byId('time-servers');
  if (list.textContent !== servers().join(''))
    list.replaceChildren(...servers().map(server => element('li', {}, server || element('small', {}, 'none'))));
}

function showFacts(ntp) {
  const facts = [['Last', ntp.lastSynchronisation ?? 'none in this run'], ['System clock', ntp.systemClock ?? 'not set in this run'],
    ['Battery’s clock', ntp.realTimeClock ?? 'not set in this run'], ['Note', settingsHint()]];
  byId('time-facts').replaceChildren(...facts.flatMap(([term, text]) => [element('dt', {}, term), element('dd', {}, text)]));
}

// An attempt that only began asked nobody. Of several in a row one line remains.
function closeAttempt() {
  const [begun, before] = byId('time-attempts').children;
  if (told.size !== 1 || !told.has(BEGUN) || !begun) return;
  if (before?.dataset.text === NOBODY_ASKED) before.remove();
  begun.dataset.text = NOBODY_ASKED;
  setText(begun.lastElementChild, NOBODY_ASKED);
}

function tell(time, text) {
  if (told.has(text)) return;
  told.add(text);
  prepend(byId('time-attempts'), element('li', {}, element('time', { dateTime: time }, timeOfDay(time)), ' ', element('span', {}, text)), ATTEMPTS);
}

function explain({ time, text }) {
  if (BEGIN.test(text)) {
    closeAttempt();
    told = new Set();
  }
  for (const [pattern, meaning] of REASONS) {
    const found = pattern.exec(text);
    if (found) tell(time, meaning(found[1]));
  }
}

function explainFailure(ntp) {
  if (askedAt && told.size <= 1 && ntp.lastSynchronisation?.includes('failed')) tell(askedAt, NOBODY_ASKED);
  askedAt = null;
}

// How it went only a result variable tells.
async function synchronise(event) {
  await act(event.target, 'set page_sync 99');
  await act(event.target, 'ExecNTP(page_sync)');
}

export function start() {
  byId('time-switch').addEventListener('click', event => act(event.target, `write ${SWITCH} ${value(SWITCH) === 1 ? 0 : 1}`));
  byId('time-now').addEventListener('click', synchronise);
  listen('readings', showSettings);
  listen('time', showFacts);
  listen('time', explainFailure);
  listen('acted', ({ time, line }) => { if (/^ExecNTP/i.test(line)) askedAt = time; });
  listen('log', explain);
}
