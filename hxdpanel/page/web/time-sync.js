// Time synchronisation: what is set, what the last attempts did, and why one failed.
import { listen } from './bus.js';
import { byId, element, prepend, setText, timeOfDay } from './dom.js';
import { act } from './hardware.js';
import { present } from './readings.js';

const [SWITCH, MODE, PERIOD, FIRST_SERVER, LAST_SERVER] = [12, 13, 14, 15, 18];
const ATTEMPTS = 30;

// Lines that the driver prints, and what each means for the attempt.
const REASONS = [
  [/getaddrinfo error/, 'the name servers do not know the name, or do not answer'],
  [/tryToSend:187/, 'there is no route to the server'],
  [/tryToSend:214/, 'no answer within 2 s: wrong address, or UDP port 123 is blocked'],
  [/getServerTime:305|sendPacketToServer:246/, 'an empty answer'],
  [/tryToSend:220/, 'stopped while it waited for the answer'],
  [/date is :/, 'a server answered; the clocks are set'],
  [/execNtp-/, 'a synchronisation was asked for'],
];

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

function explain({ time, text }) {
  const reason = REASONS.find(([pattern]) => pattern.test(text));
  if (!reason) return;
  prepend(byId('time-attempts'), element('li', { title: text }, element('time', { dateTime: time }, timeOfDay(time)), ` ${reason[1]}`), ATTEMPTS);
}

export function start() {
  byId('time-switch').addEventListener('click', event => act(event.target, `write ${SWITCH} ${value(SWITCH) === 1 ? 0 : 1}`));
  byId('time-now').addEventListener('click', event => act(event.target, 'ExecNTP()'));
  listen('readings', showSettings);
  listen('time', showFacts);
  listen('log', explain);
}
