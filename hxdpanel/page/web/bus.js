// What the modules of the page tell each other. A state (panel, help, ...) is kept, so that whoever
// asks later is told at once; an event (a beep, a line of the log) is told to those who listen.
const states = new Map();
const listeners = new Map();

function tell(topic, value) {
  for (const listener of listeners.get(topic) ?? []) listener(value);
}

export function publish(topic, value) {
  states.set(topic, value);
  tell(topic, value);
}

export { tell as announce };

export function state(topic) {
  return states.get(topic);
}

export function listen(topic, listener) {
  if (!listeners.has(topic)) listeners.set(topic, []);
  listeners.get(topic).push(listener);
  if (states.has(topic)) listener(states.get(topic));
}

// The function runs once, soon after the last of several calls.
export function calmed(run, milliseconds) {
  let timer = 0;
  return () => {
    clearTimeout(timer);
    timer = setTimeout(run, milliseconds);
  };
}
