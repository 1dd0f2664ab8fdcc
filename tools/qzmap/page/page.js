// An output and its sources side by side. A text is bytes; a stretch is a part of the output that
// came from one place, and a range is the part of a source that one or more stretches came from.
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
    element.append(isShown ? character : makeSpan('raw', escapeBytes(bytes.subarray(at, at + step))));
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
  constructor(source) {
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

  start(range) { return stretches.offset[this.order[this.first[range]]]; }
  end(range) { return this.start(range) + stretches.size[this.order[this.first[range]]]; }
  kind(range) { return stretches.kind[this.order[this.first[range]]]; }
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

// ---- panes --------------------------------------------------------------------------------------

const ROW_HEIGHT = 20;      // as in the style
const TALLEST = 8_000_000;  // in pixels; beyond, one pixel of the scroll bar stands for more
const SPARE = 8;            // rows above and below those that can be seen

// Shows the rows of a text that can be seen. parts(first, last) tells what they consist of.
class Pane {
  constructor(id, parts) {
    this.scroller = byId(id);
    this.parts = parts;
    this.rows = document.createElement('div');
    this.rows.className = 'rows';
    this.rows.setAttribute('role', 'none');
    this.sizer = document.createElement('div');
    this.sizer.setAttribute('role', 'none');
    this.scroller.append(this.sizer, this.rows);
    this.cursor = 0;
    this.found = [0, 0];
    this.scroller.addEventListener('scroll', () => this.requestRender());
    new ResizeObserver(() => this.requestRender()).observe(this.scroller);
  }

  show(text, cursor = 0) {
    this.text = text;
    this.cursor = cursor;
    this.found = [0, 0];
    this.content = '';
    const digits = String(text.rows.lineCount).length;
    this.digits = digits;
    this.height = Math.min(text.rows.count * ROW_HEIGHT + 4, TALLEST);
    this.sizer.style.height = `${this.height}px`;
    this.rows.style.width = `calc(${Math.max(text.rows.widest + digits, 1)}ch + 40px)`;
    this.scroller.scrollTo(0, 0);
    this.render();
  }

  get seen() { return this.scroller.clientHeight / ROW_HEIGHT; }

  // The row at the top, with a fraction.
  get top() {
    const {scrollTop, clientHeight} = this.scroller;
    if (this.height < TALLEST)
      return scrollTop / ROW_HEIGHT;
    return scrollTop / (this.height - clientHeight) * (this.text.rows.count - this.seen);
  }

  set top(row) {
    const most = this.text.rows.count - this.seen;
    const wanted = Math.max(0, Math.min(row, most));
    this.scroller.scrollTop = this.height < TALLEST
      ? wanted * ROW_HEIGHT
      : wanted / most * (this.height - this.scroller.clientHeight);
  }

  requestRender() {
    if (!this.isWaiting)
      requestAnimationFrame(() => this.render());
    this.isWaiting = true;
  }

  render() {
    this.isWaiting = false;
    const {count} = this.text.rows, {top} = this;
    const first = Math.max(0, Math.floor(top) - SPARE);
    const last = Math.min(count, Math.ceil(top + this.seen) + SPARE);
    const content = [this.text.name, first, last, ...this.found].join(' ');
    if (content !== this.content)
      this.makeRows(first, last);
    this.content = content;
    const y = this.scroller.scrollTop - (top - first) * ROW_HEIGHT;
    this.rows.style.transform = `translateY(${y}px)`;
    paint(this);
  }

  makeRows(first, last) {
    const rows = [];
    for (let row = first; row < last; ++row)
      rows.push(this.makeRow(row));
    if (last === 0)
      rows.push(makeSpan('empty', `${this.text.name} is empty.`));
    this.rows.replaceChildren(...rows);
  }

  makeRow(row) {
    const {starts, lines} = this.text.rows;
    const element = makeSpan('row', '');
    const isFirst = row === 0 || lines[row - 1] !== lines[row];
    const number = makeSpan('number', String(isFirst ? lines[row] : '↪').padStart(this.digits));
    number.setAttribute('aria-hidden', 'true');
    element.setAttribute('role', 'none');
    element.append(number);
    for (const part of this.parts(starts[row], starts[row + 1])) {
      for (const [first, last] of this.cutAtFound(part.first, part.last)) {
        const span = makeSpan(part.className, '');
        span.id = `${this.scroller.id}-${first}`;
        span.dataset.offset = first;
        if (part.isStretch)
          span.setAttribute('role', 'option');
        span.classList.toggle('found', first >= this.found[0] && last <= this.found[1]);
        appendBytes(span, this.text.bytes.subarray(first, last));
        element.append(span);
      }
    }
    return element;
  }

  cutAtFound(first, last) {
    const cuts = [first, ...this.found.filter(at => at > first && at < last), last];
    return cuts.slice(1).map((end, i) => [cuts[i], end]);
  }

  // The element that shows a byte, if it can be seen.
  elementAt(offset) {
    let found = null;
    for (const span of this.rows.querySelectorAll('[data-offset]'))
      if (Number(span.dataset.offset) <= offset)
        found = span;
    return found;
  }

  reveal(offset) {
    const row = this.text.rowAt(offset);
    if (row < this.top + 1 || row > this.top + this.seen - 2)
      this.top = row - Math.floor(this.seen / 3);
    this.render();
    const span = this.elementAt(offset), view = this.scroller.getBoundingClientRect();
    if (!span)
      return;
    // As far to the left as the start of the stretch can be seen there.
    const {scroller} = this, start = span.getBoundingClientRect().left - view.left;
    const left = start + scroller.scrollLeft, gutter = (this.digits + 4) * 8;
    if (left < view.width * 0.7)
      scroller.scrollLeft = 0;
    else if (start < gutter || start > view.width * 0.7)
      scroller.scrollLeft = left - view.width / 3;
  }
}

// ---- the state ----------------------------------------------------------------------------------

const sources = data.sources.map(({name, bytes}) => new Text(name, decode(bytes)));
const [stretches, outputBytes] = readStretches(sources);
const output = new Text(data.output, outputBytes);
const ranges = sources.map((_, i) => new Ranges(i));
const none = {stretch: -1, source: -1, ranges: []};
let shownSource = 0;
let lit = none;    // what was chosen: a stretch, or ranges of a source, and their counterparts
let hover = none;  // the same for what the mouse points at
let place = 0;     // which of the places of the chosen ranges is shown
let active;        // the pane that was used last

const stretchAt = offset => search(stretches.count, i => stretches.start[i + 1] > offset);

function outputParts(first, last) {
  const parts = [];
  for (let i = stretchAt(first); i < stretches.count && stretches.start[i] < last; ++i)
    parts.push({
      first: Math.max(first, stretches.start[i]), last: Math.min(last, stretches.start[i + 1]),
      className: `s ${KINDS[stretches.kind[i]]}`, isStretch: true,
    });
  return parts;
}

// Where ranges lie in each other, a part shows the shortest.
function sourceParts(first, last) {
  const own = ranges[shownSource], touching = own.touching(first, last);
  const cuts = new Set([first, last]);
  for (const r of touching)
    for (const at of [own.start(r), own.end(r)])
      if (at > first && at < last)
        cuts.add(at);
  const sorted = [...cuts].sort((a, b) => a - b);
  return sorted.slice(1).map((end, i) => {
    const start = sorted[i];
    let inner = -1;
    for (const r of touching)
      if (own.start(r) <= start && own.end(r) >= end &&
          (inner < 0 || own.end(r) - own.start(r) <= own.end(inner) - own.start(inner)))
        inner = r;
    const isStretch = inner >= 0;
    return {first: start, last: end, isStretch,
            className: isStretch ? `s ${KINDS[own.kind(inner)]}` : 'unused'};
  });
}

const outputPane = new Pane('output', outputParts);
const sourcePane = new Pane('source', sourceParts);
const otherPane = pane => pane === outputPane ? sourcePane : outputPane;

// What a byte of a pane's text belongs to.
function chosenAt(pane, offset) {
  if (pane === outputPane) {
    const stretch = stretchAt(offset);
    if (stretch === stretches.count)
      return none;
    const source = stretches.source[stretch], range = stretches.range[stretch];
    return {stretch, source, ranges: range < 0 ? [] : [range]};
  }
  const touching = ranges[shownSource]?.touching(offset, offset + 1) ?? [];
  return touching.length > 0 ? {stretch: -1, source: shownSource, ranges: touching} : none;
}

function isPartOf(pane, offset, chosen) {
  if (pane === outputPane && chosen.stretch >= 0)
    return stretchAt(offset) === chosen.stretch;
  if (pane === outputPane) {
    const stretch = stretchAt(offset);
    return stretches.source[stretch] === chosen.source &&
           chosen.ranges.includes(stretches.range[stretch]);
  }
  if (shownSource !== chosen.source)
    return false;
  const own = ranges[shownSource];
  return chosen.ranges.some(r => own.start(r) <= offset && own.end(r) > offset);
}

// ---- lights -------------------------------------------------------------------------------------

function paint(pane) {
  const cursor = pane.elementAt(pane.cursor);
  for (const span of pane.rows.querySelectorAll('[data-offset]')) {
    const offset = Number(span.dataset.offset);
    const isLit = isPartOf(pane, offset, lit);
    span.classList.toggle('lit', isLit);
    span.classList.toggle('hover', isPartOf(pane, offset, hover));
    span.classList.toggle('cursor', span === cursor);
    if (span.getAttribute('role') === 'option')
      span.setAttribute('aria-selected', isLit);
  }
  if (cursor)
    pane.scroller.setAttribute('aria-activedescendant', cursor.id);
  else
    pane.scroller.removeAttribute('aria-activedescendant');
}

function paintAll() {
  paint(outputPane);
  paint(sourcePane);
  [...byId('tabs').children].forEach((tab, i) =>
    tab.classList.toggle('lit', i === lit.source || i === hover.source));
  const places = placesOf(lit);
  byId('places').hidden = places.length < 2;
  byId('place').textContent = `place ${place + 1} of ${places.length}`;
}

// The stretches that came from chosen ranges, in the order of the output.
function placesOf({stretch, source, ranges: chosen}) {
  if (stretch >= 0 || chosen.length === 0)
    return [];
  const all = chosen.flatMap(r => [...ranges[source].placesOf(r)]);
  return chosen.length === 1 ? all : all.sort((a, b) => a - b);
}

function describeStretch(stretch, offset) {
  const from = `${output.name}:${output.placeOf(offset)}: `;
  const kind = stretches.kind[stretch], source = sources[stretches.source[stretch]];
  if (kind === INDENTATION)
    return from + 'indentation';
  if (kind === INSERTED)
    return from + 'inserted by qzexpand';
  const start = stretches.offset[stretch], end = start + stretches.size[stretch];
  if (kind === CALCULATED)
    return `${from}calculated from ${quote(source.bytes.subarray(start, end))}, ` +
           `${source.name}:${source.placeOf(start)}`;
  return `${from}copied from ${source.name}:` +
         source.placeOf(start + offset - stretches.start[stretch]);
}

function describe(pane, offset, chosen) {
  if (chosen.stretch >= 0)
    return describeStretch(chosen.stretch, offset);
  if (pane.text.rows.count === 0)
    return '';
  const count = placesOf(chosen).length;
  const times = count === 0 ? 'not in the output' :
    count === 1 ? 'in one place of the output' : `in ${count} places of the output`;
  return `${pane.text.name}:${pane.text.placeOf(offset)}: ${times}`;
}

function say(text) {
  byId('status').textContent = text;
}

// ---- choosing and jumping -----------------------------------------------------------------------

function use(pane) {
  active = pane;
  byId('searched').textContent = pane === outputPane ? 'the output' : pane.text.name;
}

// Makes a byte the chosen one of its pane and lights what belongs to it.
function choose(pane, offset) {
  use(pane);
  pane.cursor = offset;
  lit = chosenAt(pane, offset);
  place = Math.max(0, placesOf(lit).indexOf(stretchAt(outputPane.cursor)));
  paintAll();
  say(describe(pane, offset, lit));
}

function showSource(index) {
  shownSource = index;
  sourcePane.show(sources[index]);
  [...byId('tabs').children].forEach((tab, i) => {
    tab.setAttribute('aria-selected', i === index);
    tab.tabIndex = i === index ? 0 : -1;
  });
  byId(`tab-${index}`).scrollIntoView({block: 'nearest', inline: 'nearest'});
  byId('panel').setAttribute('aria-labelledby', `tab-${index}`);
  byId('source').setAttribute('aria-label', `Source ${sources[index].name}`);
  if (active === sourcePane)
    use(sourcePane);
}

// Where a chosen byte of the output came from.
function originOf({stretch}, offset) {
  const inside = stretches.kind[stretch] === COPIED ? offset - stretches.start[stretch] : 0;
  return stretches.offset[stretch] + inside;
}

// Brings the counterpart of what is lit into view. Returns whether there is one.
function revealCounterpart() {
  if (lit.stretch >= 0) {
    if (lit.source < 0)
      return false;
    if (shownSource !== lit.source)
      showSource(lit.source);
    sourcePane.cursor = originOf(lit, outputPane.cursor);
    sourcePane.reveal(sourcePane.cursor);
    return true;
  }
  const stretch = placesOf(lit)[place];
  if (stretch === undefined)
    return false;
  const inside = sourcePane.cursor - stretches.offset[stretch];
  const isInside = stretches.kind[stretch] === COPIED && inside > 0 &&
    inside < stretches.size[stretch];
  outputPane.cursor = stretches.start[stretch] + (isInside ? inside : 0);
  outputPane.reveal(outputPane.cursor);
  return true;
}

function stepPlace(step) {
  if (lit.ranges.length === 0)
    return;
  const from = lit.stretch;
  lit = {...lit, stretch: -1};  // from here on, all that came from the same range
  const places = placesOf(lit);
  place = ((from < 0 ? place : places.indexOf(from)) + step + places.length) % places.length;
  revealCounterpart();
  paintAll();
  say(describeStretch(places[place], outputPane.cursor));
}

function jump(pane) {
  choose(pane, pane.cursor);
  if (revealCounterpart()) {
    const other = otherPane(pane);
    use(other);
    other.scroller.focus();
  }
  paintAll();
}

function clear() {
  lit = hover = none;
  outputPane.found = sourcePane.found = [0, 0];
  outputPane.render();
  sourcePane.render();
  paintAll();
  say('');
}

// ---- the mouse ----------------------------------------------------------------------------------

function offsetUnder(event) {
  const span = event.target.closest?.('[data-offset]');
  return span ? Number(span.dataset.offset) : -1;
}

function listenToMouse(pane) {
  pane.scroller.addEventListener('mouseover', event => {
    const offset = offsetUnder(event);
    hover = offset < 0 ? none : chosenAt(pane, offset);
    paintAll();
    if (offset >= 0 && lit === none)
      say(describe(pane, offset, hover));
  });
  pane.scroller.addEventListener('mouseleave', () => {
    hover = none;
    paintAll();
  });
  pane.scroller.addEventListener('click', event => {
    const offset = offsetUnder(event);
    if (offset < 0 || !getSelection().isCollapsed)
      return;
    const isAgain = lit !== none && lit.stretch < 0 && pane === sourcePane && offset === pane.cursor;
    if (isAgain)
      return stepPlace(1);
    choose(pane, offset);
    revealCounterpart();
    paintAll();
  });
  pane.scroller.addEventListener('focus', () => use(pane));
}

// ---- the keyboard -------------------------------------------------------------------------------

// Where the next stretch starts, or the one before; -1 at the ends.
function besideCursor(pane, step) {
  if (pane === outputPane) {
    const stretch = stretchAt(pane.cursor) + step;
    return stretch >= 0 && stretch < stretches.count ? stretches.start[stretch] : -1;
  }
  const own = ranges[shownSource];
  return step > 0 ? own.startBehind(pane.cursor + 1) : own.startBefore(pane.cursor);
}

// The same column some rows below or above.
function belowCursor(pane, step) {
  const {starts, count} = pane.text.rows, row = pane.text.rowAt(pane.cursor);
  const next = Math.max(0, Math.min(count - 1, row + step));
  const column = pane.cursor - starts[row];
  return next === row ? -1 : Math.min(starts[next] + column, starts[next + 1] - 1);
}

const MOVES = {
  ArrowRight: pane => besideCursor(pane, 1),
  ArrowLeft: pane => besideCursor(pane, -1),
  ArrowDown: pane => belowCursor(pane, 1),
  ArrowUp: pane => belowCursor(pane, -1),
  PageDown: pane => belowCursor(pane, Math.floor(pane.seen) - 1),
  PageUp: pane => belowCursor(pane, 1 - Math.floor(pane.seen)),
  Home: () => 0,
  End: pane => pane.text.bytes.length - 1,
};

const ACTIONS = {
  Enter: jump,
  n: () => stepPlace(1),
  p: () => stepPlace(-1),
};

function listenToKeys(pane) {
  pane.scroller.addEventListener('keydown', event => {
    if (event.ctrlKey || event.altKey || event.metaKey || pane.text.rows.count === 0)
      return;
    const move = MOVES[event.key], action = ACTIONS[event.key];
    if (!move && !action)
      return;
    event.preventDefault();
    if (action)
      return action(pane);
    const offset = move(pane);
    if (offset >= 0) {
      choose(pane, offset);
      pane.reveal(offset);
    }
  });
}

function listenToPage() {
  document.addEventListener('keydown', event => {
    const isTyping = event.target === byId('needle');
    if (event.key === 'Escape')
      clear();
    if (event.key === '/' && !isTyping) {
      event.preventDefault();
      byId('needle').select();
      byId('needle').focus();
    }
  });
  byId('next').addEventListener('click', () => stepPlace(1));
  byId('previous').addEventListener('click', () => stepPlace(-1));
}

// ---- tabs ---------------------------------------------------------------------------------------

function makeTabs() {
  const tabs = byId('tabs');
  sources.forEach((source, i) => {
    const tab = document.createElement('button');
    tab.type = 'button';
    tab.id = `tab-${i}`;
    tab.textContent = source.name;
    tab.setAttribute('role', 'tab');
    tab.setAttribute('aria-controls', 'panel');
    tab.addEventListener('click', () => showSource(i));
    tabs.append(tab);
  });
  tabs.addEventListener('keydown', event => {
    const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
    if (!step)
      return;
    event.preventDefault();
    showSource((shownSource + step + sources.length) % sources.length);
    byId(`tab-${shownSource}`).focus();
  });
}

// ---- finding ------------------------------------------------------------------------------------

function matches(bytes, at, needle) {
  return needle.every((byte, i) => bytes[at + i] === byte);
}

// The next match behind an offset, or the one before it; -1 if there is none.
function findBytes(bytes, needle, from, step) {
  const next = at => step > 0 ? bytes.indexOf(needle[0], at) : bytes.lastIndexOf(needle[0], at);
  const isInside = at => at >= 0 && at < bytes.length;
  let at = isInside(from) ? next(from) : -1;
  while (at >= 0 && !matches(bytes, at, needle))
    at = isInside(at + step) ? next(at + step) : -1;
  return at;
}

function find(step) {
  const needle = new TextEncoder().encode(byId('needle').value), {bytes} = active.text;
  if (needle.length === 0)
    return;
  let at = findBytes(bytes, needle, active.cursor + step, step);
  if (at < 0)
    at = findBytes(bytes, needle, step > 0 ? 0 : bytes.length - 1, step);
  if (at < 0)
    return say(`${active.text.name}: nothing found`);
  active.found = [at, at + needle.length];
  choose(active, at);
  active.reveal(at);
}

function listenToFind() {
  byId('find').addEventListener('submit', event => {
    event.preventDefault();
    find(1);
  });
  byId('find-previous').addEventListener('click', () => find(-1));
}

// ---- the start ----------------------------------------------------------------------------------

byId('output-name').textContent = output.name;
byId('output').setAttribute('aria-label', `Output ${output.name}`);
makeTabs();
outputPane.show(output);
if (sources.length > 0)
  showSource(0);
else
  sourcePane.show(new Text('no source', new Uint8Array(0)));
use(outputPane);
say(`${output.rows.lineCount} lines in ${stretches.count} stretches`);
for (const pane of [outputPane, sourcePane]) {
  listenToMouse(pane);
  listenToKeys(pane);
}
listenToPage();
listenToFind();
requestAnimationFrame(() => { document.documentElement.dataset.ready = 'yes'; });
