// The page: what is lit, and what the mouse and the keys do.

// ---- the state ----------------------------------------------------------------------------------

const sources = data.sources.map(({name, bytes}) => new Text(name, decode(bytes)));
const [stretches, outputBytes] = readStretches(sources);
const output = new Text(data.output, outputBytes);
const ranges = sources.map((_, i) => new Ranges(stretches, i));
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

const outputPane = new Pane('output', outputParts, paint);
const sourcePane = new Pane('source', sourceParts, paint);
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
function placesOf(chosen) {
  chosen.places ??= collectPlaces(chosen);
  return chosen.places;
}

function collectPlaces({stretch, source, ranges: chosen}) {
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
  const {source, ranges: chosen} = lit;
  lit = {stretch: -1, source, ranges: chosen};  // all that came from the same range
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
    if (event.key === 'Escape') {
      clear();
      if (isTyping)
        active.scroller.focus({preventScroll: true});
    }
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
outputPane.scroller.focus({preventScroll: true});
listenToFind();
requestAnimationFrame(() => { document.documentElement.dataset.ready = 'yes'; });
