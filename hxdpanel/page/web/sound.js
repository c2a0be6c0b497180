// The beeps, to be heard: only after the button, as browsers want it.
import { listen } from './bus.js';
import { byId, setText } from './dom.js';

const LOUDNESS = 0.05;
const LONGEST_MS = 5000;
let audio = null;

function beep({ kind, frequencyHz, milliseconds }) {
  if (kind !== 'beep' || audio?.state !== 'running') return;
  const tone = audio.createOscillator();
  const volume = audio.createGain();
  tone.type = 'square';
  tone.frequency.value = frequencyHz;
  volume.gain.value = LOUDNESS;
  tone.connect(volume).connect(audio.destination);
  tone.start();
  tone.stop(audio.currentTime + Math.min(milliseconds, LONGEST_MS) / 1000);
}

async function toggle(event) {
  audio ??= new AudioContext();
  await (audio.state === 'running' && event.target.getAttribute('aria-pressed') === 'true' ? audio.suspend() : audio.resume());
  const isOn = audio.state === 'running';
  event.target.setAttribute('aria-pressed', isOn);
  setText(event.target, isOn ? 'Sound on' : 'Sound off');
}

export function start() {
  byId('sound').addEventListener('click', toggle);
  listen('did', beep);
}
