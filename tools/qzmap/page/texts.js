// What the page shows: an output, its sources and the way between them. A text is bytes; a stretch is
// a part of the output that came from one place, and a range is the part of a source that one or
// more stretches came from.
'use strict';

const byId = id => document.getElementById(id);
const COPIED = 0, CALCULATED = 1, INDENTATION = 2, INSERTED = 3;
const KINDS = ['copied', 'calculated', 'indentation', 'inserted'];

// ---- the data -----------------------------------------------------------------------------------

const data = JSON.parse(byId('data').textContent);

function decode(base64) {
  const binary = atob(base64);
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i)
    bytes[i] = binary.charCodeAt(i);
  return bytes;
}

// The numbers of the pieces: seven bits in a byte, the low ones first.
function makeReader(bytes) {
  let at = 0;
  return () => {
    let value = 0;
    for (let factor = 1;; factor *= 128) {
      const byte = bytes[at++];
      value += (byte & 127) * factor;
      if (byte < 128)
        return value;
    }
  };
}

// The first index in [0, count) for which the test holds; count if there is none.
function search(count, test) {
  let first = 0;
  while (first < count) {
    const middle = Math.floor((first + count) / 2);
    if (test(middle))
      count = middle;
    else
      first = middle + 1;
  }
  return first;
}

// The stretches in the order of the output. The output is put together again from them: what was
// copied comes out of the sources, everything else out of the rest.
function readStretches(sources) {
  const count = data.count;
  const stretches = {
    count, kind: new Uint8Array(count), start: new Float64Array(count + 1),
    source: new Int32Array(count), offset: new Float64Array(count), size: new Float64Array(count),
    range: new Int32Array(count).fill(-1),
  };
  const read = makeReader(decode(data.pieces));
  const rest = decode(data.rest);
  const output = new Uint8Array(data.size);
  const ends = sources.map(() => 0);
  let at = 0, restAt = 0;
  for (let i = 0; i < count; ++i) {
    const head = read(), kind = head % 4, size = Math.floor(head / 4);
    stretches.kind[i] = kind;
    stretches.start[i] = at;
    stretches.source[i] = -1;
    if (kind === COPIED || kind === CALCULATED) {
      const source = read(), step = read();
      const offset = ends[source] + (step % 2 ? -(step + 1) / 2 : step / 2);
      const length = kind === COPIED ? size : read();
      ends[source] = offset + length;
      stretches.source[i] = source;
      stretches.offset[i] = offset;
      stretches.size[i] = length;
    }
    if (kind === COPIED) {
      const offset = stretches.offset[i];
      output.set(sources[stretches.source[i]].bytes.subarray(offset, offset + size), at);
    } else {
      output.set(rest.subarray(restAt, restAt + size), at);
      restAt += size;
    }
    at += size;
  }
  stretches.start[count] = at;
  return [stretches, output];
}

// ---- bytes on the screen ------------------------------------------------------------------------

const decoder = new TextDecoder('utf-8', {fatal: true, ignoreBOM: true});

// Control bytes, and characters that turn the direction of text or end a line.
const HIDDEN = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u200e\u200f\u2028-\u202e\u2066-\u2069\ufeff]/u;

function tryDecode(bytes) {
  try {
    return decoder.decode(bytes);
  } catch {
    return null;
  }
}

function escapeBytes(bytes) {
  return Array.from(bytes, byte => '\\x' + byte.toString(16).padStart(2, '0')).join('');
}

function makeSpan(className, text) {
  const span = document.createElement('span');
  span.className = className;
  span.textContent = text;
  return span;
}

// Adds text to an element: what can be read as it is, anything else as \x1b.
function appendBytes(element, bytes) {
  if (bytes[bytes.length - 1] === 10) {
    appendBytes(element, bytes.subarray(0, -1));
    element.append(makeSpan('end', ''));
    return;
  }
  const whole = tryDecode(bytes);
  if (whole !== null && !HIDDEN.test(whole)) {
    element.append(whole);
    return;
  }
  for (let at = 0; at < bytes.length;) {
    const lead = bytes[at];
    const size = lead < 0xc0 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    const character = tryDecode(bytes.subarray(at, at + size));
    const isShown = character !== null && !HIDDEN.test(character);
    const step = character === null ? 1 : size;
    const isReturn = lead === 13 && at + 1 === bytes.length;  // of CR LF, most often
    element.append(isShown ? character : makeSpan(isReturn ? 'raw return' : 'raw',
                                                  escapeBytes(bytes.subarray(at, at + step))));
    at += step;
  }
}

// At most this many columns are taken by a row.
function widthOf(bytes) {
  let tabs = 0, isPlain = true;
  for (const byte of bytes) {
    tabs += byte === 9;
    isPlain = isPlain && (byte === 9 || byte === 10 || (byte >= 32 && byte < 127));
  }
  const whole = isPlain ? '' : tryDecode(bytes);
  const isReadable = whole !== null && !HIDDEN.test(whole);
  return (isReadable ? bytes.length : 4 * bytes.length) + 7 * tabs;
}

// The start of a text, for the status line.
function quote(bytes) {
  const end = bytes.findIndex(byte => byte === 10 || byte === 13);
  const most = Math.min(end < 0 ? bytes.length : end, 60);
  const quoted = document.createElement('span');
  appendBytes(quoted, bytes.subarray(0, most));
  return '`' + quoted.textContent + (most < bytes.length ? '…`' : '`');
}

// ---- rows ---------------------------------------------------------------------------------------

const LONGEST_ROW = 1000;  // in bytes; a longer line goes on in the next row

const isContinuation = byte => (byte & 0xc0) === 0x80;

class Text {
  constructor(name, bytes) {
    this.name = name;
    this.bytes = bytes;
  }

  // Done when the text is shown for the first time.
  get rows() {
    if (!this.madeRows)
      this.makeRows();
    return this.madeRows;
  }

  makeRows() {
    const {bytes} = this, starts = [], lines = [];
    let line = 0, widest = 0;
    for (let at = 0; at < bytes.length;) {
      const feed = bytes.indexOf(10, at);
      const end = feed < 0 ? bytes.length : feed + 1;
      ++line;
      while (at < end) {
        starts.push(at);
        lines.push(line);
        let next = Math.min(end, at + LONGEST_ROW);
        for (let i = 0; i < 3 && next < end && isContinuation(bytes[next]); ++i)
          --next;
        widest = Math.max(widest, widthOf(bytes.subarray(at, next)));
        at = next;
      }
    }
    starts.push(bytes.length);
    this.madeRows = {count: lines.length, starts, lines, lineCount: line, widest};
  }

  rowAt(offset) {
    const {starts, count} = this.rows;
    return Math.max(0, Math.min(count, search(count, i => starts[i] > offset)) - 1);
  }

  // "3:7", from 1
  placeOf(offset) {
    const {starts, lines} = this.rows;
    let row = this.rowAt(offset);
    const line = lines[row];
    while (row > 0 && lines[row - 1] === line)
      --row;
    return `${line}:${offset - starts[row] + 1}`;
  }
}

// ---- ranges -------------------------------------------------------------------------------------

// Blocks of ranges are passed over where all of them end too early.
const BLOCK = 256;

// The ranges of one source, by their start, and the stretches that came from each.
class Ranges {
  constructor(stretches, source) {
    this.stretches = stretches;
    const used = [];
    for (let i = 0; i < stretches.count; ++i)
      if (stretches.source[i] === source && stretches.size[i] > 0)
        used.push(i);
    const {offset, size, kind} = stretches;
    this.order = Uint32Array.from(used).sort((a, b) =>
      offset[a] - offset[b] || size[b] - size[a] || kind[a] - kind[b] || a - b);
    this.first = [];  // of each range: where its stretches start in the order
    this.order.forEach((stretch, i) => {
      const before = this.order[i - 1];
      if (i === 0 || offset[stretch] !== offset[before] || size[stretch] !== size[before] ||
          kind[stretch] !== kind[before])
        this.first.push(i);
      stretches.range[stretch] = this.first.length - 1;
    });
    this.count = this.first.length;
    this.blockEnds = [];
    for (let r = 0; r < this.count; ++r) {
      const block = Math.floor(r / BLOCK);
      this.blockEnds[block] = Math.max(this.blockEnds[block] ?? 0, this.end(r));
    }
  }

  start(range) { return this.stretches.offset[this.order[this.first[range]]]; }
  end(range) { return this.start(range) + this.stretches.size[this.order[this.first[range]]]; }
  kind(range) { return this.stretches.kind[this.order[this.first[range]]]; }
  placesOf(range) { return this.order.subarray(this.first[range], this.first[range + 1]); }

  // Those that hold a byte of [first, last), by their start.
  touching(first, last) {
    const behind = search(this.count, r => this.start(r) >= last);
    const found = [];
    for (let r = 0; r < behind; ++r) {
      if (r % BLOCK === 0 && this.blockEnds[r / BLOCK] <= first)
        r += BLOCK - 1;
      else if (this.end(r) > first)
        found.push(r);
    }
    return found;
  }

  // Where the first range at or behind an offset starts, and the last one in front of it; -1 if
  // there is none.
  startBehind(offset) {
    const r = search(this.count, i => this.start(i) >= offset);
    return r < this.count ? this.start(r) : -1;
  }
  startBefore(offset) {
    const r = search(this.count, i => this.start(i) >= offset);
    return r > 0 ? this.start(r - 1) : -1;
  }
}
