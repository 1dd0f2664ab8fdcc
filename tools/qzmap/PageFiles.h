// The files of page/, as the build embeds them.
#pragma once

namespace qztools {

extern const char s_html[];  // with a {{word}} where something goes in
extern const char s_css[];
extern const char s_js[];

}  // namespace qztools
