// Paths and files. Paths use forward slashes; nothing but ReadStringFromFile asks the file system.
#pragma once

#include "qzUtils/SubString.h"

namespace vorn {

// Rewrites path to its normal form: every backslash becomes a slash; no empty and no "."
// elements; x/.. cancelled; leading ".." kept; no trailing slash but for "/" itself. An empty
// path stays empty, and what cancels to nothing becomes ".".
void NormalisePath(xstring& path);

// Sets result to the path that leads from the directory a to b: a/b and a/c/d.h give ../c/d.h.
// Equal paths give ".". Where no path leads there by the names alone (one is absolute and the
// other is not, or a climbs out by ".." where b does not), result is b itself. Whatever form the
// two are in, they count by their normal forms, and the result is in normal form.
void CalcRelativePath(SubString a, SubString b, xstring& result);

// Reads the exact bytes of a file into s. False, with s as it was, for a directory, for whatever
// cannot be opened or read to its end, and for a path that holds a zero byte. The flag is of no
// effect: text is read as it stands, either way.
bool ReadStringFromFile(xstring& s, const xstring& path, bool);

}  // namespace vorn
