// Whether a channel accepts a text, by the catalogue's row; what it complains of, or "".
const inRange = (number, { lowest, highest }) =>
  (lowest === null || number >= lowest) && (highest === null || number <= highest);

function isDotted(text) {
  const numbers = text.split('.');
  return numbers.length === 4 && numbers.every(one => /^\d{1,3}$/.test(one) && Number(one) <= 255);
}

const isWhole = text => /^-?\d+$/.test(text);
export const isNumber = text => text.trim() !== '' && Number.isFinite(Number(text));

const FORMS = {
  'number': (text, row) => isNumber(text) && inRange(Math.trunc(Number(text)), row),
  'whole number': (text, row) => isWhole(text) && inRange(Number(text), row),
  'address': (text, row) => isDotted(text) && inRange(parseInt(text, 10), row),
  'netmask': (text, row) => isDotted(text) && inRange(parseInt(text, 10), row),
  'text': () => true,
};

export function complaint(row, text) {
  if (FORMS[row.form]?.(text, row)) return '';
  return row.form === 'whole number' && !isWhole(text) ? `${row.accepts}, a whole number` : row.accepts;
}
