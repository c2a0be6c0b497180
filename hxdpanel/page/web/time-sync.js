// Time synchronisation: what is set, what the last attempts did, and why one failed.
import { listen, state } from './bus.js';
import { byId, element, prepend, setText, timeOfDay } from './dom.js';
import { act } from './hardware.js';
import { present } from './readings.js';

const [SWITCH, MODE, PERIOD, FIRST_SERVER] = [0, 1, 2, 3];  // among the settings
const ATTEMPTS = 30;

// Lines that the driver prints, and what each means for the attempt; after the last colon of some
// stands the server.
const BEGIN = /execNtp-/;
const ANSWERED = /date is :(.*)/;  // comes before a clock is set
const BEGUN = 'a synchronisation begins';
const REASONS = [
  [BEGIN, () => BEGUN],
  [/tryToSend:187.*?([^:]*)$/, server => `${server}: there is no route to it`],
  [/tryToSend:214.*?([^:]*)$/, server => `${server}: no answer within 2 s; wrong address, or UDP port 123 is blocked`],
  [/tryToSend:220.*?([^:]*)$/, server => `${server}: stopped while it waited for the answer`],
  [/tryToSend:208.*?([^:]*)$/, server => `${server}: waiting for the answer failed`],
  [/getServerTime:305/, () => 'a server’s answer was empty'],
  [/open event fd failed/, () => 'the host process has run out of descriptors'],
  [ANSWERED, time => `a server answered, the clocks are to be set to ${time.trim()}`],
];
const NOBODY_ASKED = 'failed before a server was asked: no ping was answered, or the name servers do not know the names';
const UNTOLD = 'nothing is told of it; most likely no ping was answered, or the name servers do not know it';
const NOTHING_DONE = 'switched off: nothing was done';
const NOT_SET = 'failed: the platform could not set the battery’s clock';

const newAttempt = () => ({ told: new Set(), isAnswered: false, isClockSet: false });
let attempt = newAttempt();
let askedAt = null;  // when an ExecNTP ended whose result has not been seen

// The settings in their order, with the values of the last reading.
const settings = () => (state('time')?.settings ?? []).map(({ number }) => present.get(number)?.value);
const servers = () => settings().slice(FIRST_SERVER).map(server => server ?? '');
const isOn = () => settings()[SWITCH] === 1;

function settingsHint() {
  if (!isOn()) return 'Switched off: a synchronisation does nothing and reports 0.';
  if (servers().every(server => server === '')) return 'There is no server: nobody to ask.';
  return 'Servers are asked together; the first answer counts.';
}

function showSettings() {
  if (present.size === 0 || !state('time')) return;
  byId('time-switch').setAttribute('aria-checked', isOn());
  setText(byId('time-switch'), isOn() ? 'On' : 'Off');
  setText(byId('time-mode'), settings()[MODE] === 1 ? `every ${settings()[PERIOD]} h` : 'on demand only');
  const list = byId('time-servers');
  if (list.textContent !== servers().join(''))
    list.replaceChildren(...servers().map(server => element('li', {}, server || element('small', {}, 'none'))));
}

function showFacts() {
  const ntp = state('time');
  if (!ntp) return;
  const facts = [['Last', ntp.lastSynchronisation ?? 'none in this run'], ['System clock', ntp.systemClock ?? 'not set in this run'],
    ['Battery’s clock', ntp.realTimeClock ? `set to ${ntp.realTimeClock}` : 'not set in this run'], ['Note', settingsHint()]];
  byId('time-facts').replaceChildren(...facts.flatMap(([term, text]) => [element('dt', {}, term), element('dd', {}, text)]));
}

// What an attempt that only began came to. Of several in a row that came to the same one line remains.
function retell(text) {
  const [begun, before] = byId('time-attempts').children;
  if (before?.dataset.text === text) before.remove();
  begun.dataset.text = text;
  setText(begun.lastElementChild, text);
}

// Servers of which the driver has said nothing here: that a name is not known it says to standard error.
function untoldServers({ told }) {
  return servers().filter(server => server && ![...told].some(text => text.startsWith(`${server}: `)));
}

// Tells what the driver does not say itself. isDone: by the result, if there is one.
function closeAttempt(time, isDone) {
  const { told, isAnswered, isClockSet } = attempt;
  if (isAnswered && !isClockSet) tell(time, NOT_SET);
  else if (told.size === 1 && told.has(BEGUN)) retell((isDone ?? !isOn()) ? NOTHING_DONE : NOBODY_ASKED);
  else if (told.size > 1 && told.has(BEGUN) && !isAnswered && !isDone)
    for (const server of untoldServers(attempt)) tell(time, `${server}: ${UNTOLD}`);
  attempt = newAttempt();
}

function tell(time, text) {
  if (attempt.told.has(text)) return;
  attempt.told.add(text);
  prepend(byId('time-attempts'), element('li', {}, element('time', { dateTime: time }, timeOfDay(time)), ' ', element('span', {}, text)), ATTEMPTS);
}

function explain({ time, text }) {
  if (BEGIN.test(text)) closeAttempt(time);
  attempt.isAnswered ||= ANSWERED.test(text);
  for (const [pattern, meaning] of REASONS) {
    const found = pattern.exec(text);
    if (found) tell(time, meaning(found[1]));
  }
}

function explainSetting({ time, kind, text }) {
  if (kind === 'command' && text.startsWith('refused: date -s')) tell(time, 'date refused to set the system’s clock');
  if (kind !== 'clock') return;
  attempt.isAnswered = attempt.isClockSet = true;
  tell(time, `the battery’s clock is set to ${text}`);
}

function explainResult({ lastSynchronisation: result }) {
  const isDone = result?.startsWith('result') ? !result.includes('failed') : undefined;
  if (askedAt) closeAttempt(askedAt, isDone);
  askedAt = null;
}

// How it went only a result variable tells.
async function synchronise(event) {
  await act(event.target, 'set page_sync 99');
  await act(event.target, 'ExecNTP(page_sync)');
}

export function start() {
  byId('time-switch').addEventListener('click', event => act(event.target, `EnableNTP(${isOn() ? 0 : 1})`));
  byId('time-now').addEventListener('click', synchronise);
  for (const topic of ['readings', 'time']) {
    listen(topic, showSettings);
    listen(topic, showFacts);
  }
  listen('time', explainResult);
  listen('acted', ({ time, line }) => { if (/^ExecNTP/i.test(line)) askedAt = time; });
  listen('log', explain);
  listen('did', explainSetting);
  listen('hello', () => { attempt = newAttempt(); });  // something may have been missed
}
