// A pane that shows a text. Only the rows that can be seen are there.

const ROW_HEIGHT = 20;      // as in the style
const TALLEST = 8_000_000;  // in pixels; beyond, one pixel of the scroll bar stands for more
const SPARE = 8;            // rows above and below those that can be seen

// Shows the rows of a text that can be seen. parts(first, last) tells what they consist of;
// paint(pane) lights what is lit.
class Pane {
  constructor(id, parts, paint) {
    this.scroller = byId(id);
    this.parts = parts;
    this.paint = paint;
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

  show(text) {
    this.text = text;
    this.cursor = 0;
    this.found = [0, 0];
    this.content = '';
    this.digits = String(text.rows.lineCount).length;
    this.height = Math.min(text.rows.count * ROW_HEIGHT + 4, TALLEST);
    this.sizer.style.height = `${this.height}px`;
    this.rows.style.width = `calc(${Math.max(text.rows.widest + this.digits, 1)}ch + 40px)`;
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
    this.paint(this);
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
