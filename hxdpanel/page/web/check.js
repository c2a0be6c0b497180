// Whether a channel accepts a text, by the catalogue's row; what it complains of, or "".
const inRange = (number, { lowest, highest }) =>
  (lowest === null || number >= lowest) && (highest === null || number <= highest);

function isDotted(text) {
  const numbers = text.split('.');
  return numbers.length === 4 && numbers.every(one => /^\d{1,3}$/.test(one) && Number(one) <= 255);
}

const FORMS = {
  'number': (text, row) => text.trim() !== '' && Number.isFinite(Number(text)) && inRange(Math.trunc(Number(text)), row),
  'whole number': (text, row) => /^-?\d+$/.test(text) && inRange(Number(text), row),
  'address': (text, row) => isDotted(text) && inRange(parseInt(text, 10), row),
  'netmask': (text, row) => isDotted(text) && inRange(parseInt(text, 10), row),
  'text': () => true,
};

export function complaint(row, text) {
  return FORMS[row.form]?.(text, row) ? '' : row.accepts;
}
