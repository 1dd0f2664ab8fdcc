// check_v3.js MAP V3: asks the source-map package for the source of every column of an output, and
// compares what it finds in V3 with what MAP says about the same output. All paths are taken from
// the working directory, in which the output and its sources stand as well.
'use strict';

const fs = require('fs');
const { SourceMapConsumer } = require('source-map');

// ---- the map, read without the tool's code ------------------------------------------------------

const digits = 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/';

function numbersOf(record) {
  const numbers = [];
  let value = 0;
  let scale = 1;
  for (const digit of record) {
    const bits = digits.indexOf(digit);
    value += (bits % 32) * scale;
    scale *= 32;
    if (bits < 32) {
      numbers.push(value % 2 ? -(value - 1) / 2 : value / 2);
      value = 0;
      scale = 1;
    }
  }
  return numbers;
}

function bytesOf(source) {
  if (source.text !== undefined) return Buffer.from(source.text);
  if (source.base64 !== undefined) return Buffer.from(source.base64, 'base64');
  return fs.readFileSync(source.name);
}

// The pieces with their offsets: start in the output, from in the source.
function piecesOf(map) {
  const marks = map.sources.flatMap(() => [0, 0]);
  let start = 0;
  return map.pieces.join(',').split(',').map((record) => {
    const [size, mark, distance, length] = numbersOf(record);
    const piece = { start, size, source: -1 };
    start += size;
    if (distance === undefined) return piece;
    piece.source = Math.floor(mark / 2);
    piece.from = marks[mark] + distance;
    piece.isCopied = length === undefined;
    marks[mark] = piece.from + (piece.isCopied ? size : length);
    return piece;
  });
}

// ---- characters ---------------------------------------------------------------------------------

// The character at an offset: its bytes, and what it takes in UTF-16.
function characterAt(bytes, offset) {
  for (let size = 1; size <= 4 && offset + size <= bytes.length; ++size) {
    const slice = bytes.subarray(offset, offset + size);
    const text = slice.toString('utf8');
    if ([...text].length === 1 && Buffer.from(text).equals(slice)) {
      return { size, units: text.length };
    }
  }
  return { size: 1, units: 1 };
}

// Line and column of every byte of a text; all bytes of a character have that of its first.
function placesOf(bytes) {
  const places = [];
  let line = 1;
  let column = 0;
  for (let offset = 0; offset < bytes.length;) {
    const { size, units } = characterAt(bytes, offset);
    for (let i = 0; i < size; ++i) places.push({ line, column, isFirst: i === 0, units });
    column += units;
    if (bytes[offset] === 10) {
      ++line;
      column = 0;
    }
    offset += size;
  }
  return places;
}

// ---- the comparison -----------------------------------------------------------------------------

function main(mapName, v3Name) {
  const map = JSON.parse(fs.readFileSync(mapName, 'utf8'));
  const output = fs.readFileSync(map.output.name);
  const sources = map.sources.map((source) => placesOf(bytesOf(source)));
  const consumer = new SourceMapConsumer(fs.readFileSync(v3Name, 'utf8'));
  const pieces = piecesOf(map);
  const places = placesOf(output);

  let index = 0;
  let segment = null; // the piece and line of the character before, and where its segment leads
  let count = 0;
  for (let offset = 0; offset < output.length; ++offset) {
    const place = places[offset];
    if (!place.isFirst) continue;
    while (offset >= pieces[index].start + pieces[index].size) ++index;
    const piece = pieces[index];
    if (segment === null || segment.piece !== piece || segment.line !== place.line) {
      segment = { piece, line: place.line, target: { source: null, line: null, column: null } };
      if (piece.source >= 0) {
        const at = piece.from + (piece.isCopied ? offset - piece.start : 0);
        const { line, column } = sources[piece.source][at];
        segment.target = { source: map.sources[piece.source].name, line, column };
      }
    }
    for (let unit = 0; unit < place.units; ++unit) {
      const column = place.column + unit;
      const found = consumer.originalPositionFor({ line: place.line, column });
      const source = found.source === null ? null : decodeURIComponent(found.source);
      const { target } = segment;
      if (source !== target.source || found.line !== target.line
          || found.column !== target.column) {
        console.error(`${place.line}:${column} leads to ${source}:${found.line}:${found.column}, `
                      + `not to ${target.source}:${target.line}:${target.column}`);
        process.exit(1);
      }
      ++count;
    }
  }
  console.log(`${count} columns agree`);
}

main(process.argv[2], process.argv[3]);
