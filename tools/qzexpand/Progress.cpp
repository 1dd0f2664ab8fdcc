#include "Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "common/Files.h"
#include "common/Views.h"
#include "common/Visible.h"

namespace qztools {

namespace {

constexpr char s_erase[] = "\r\x1b[K";

std::size_t ColumnsOfTerminal() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// What fits on one line and leaves its last column free, where some terminals would go on to the
// next line.
std::string FirstColumns(const std::string& text) {
    const std::size_t most = ColumnsOfTerminal() - 1;
    std::size_t size = 0;
    for (std::size_t columns = 0; size < text.size();) {
        const Glyph glyph = FirstGlyph(std::string_view(text).substr(size));
        columns += glyph.Columns();
        if (columns > most)
            break;
        size += glyph.size;
    }
    return text.substr(0, size);
}

}  // namespace

Progress::Progress(std::size_t all) : m_all(all), m_hasTerminal(::isatty(STDERR_FILENO) == 1) {}

void Progress::Show(std::size_t done, const std::string& name) {
    if (!m_hasTerminal)
        return;
    const std::string line =
        '[' + std::to_string(done) + '/' + std::to_string(m_all) + "] " + VisibleName(name);
    WriteAll(STDERR_FILENO, ToSubString(s_erase + FirstColumns(line)));
    m_isShown = true;
}

void Progress::Erase() {
    if (m_isShown)
        WriteAll(STDERR_FILENO, s_erase);
    m_isShown = false;
}

}  // namespace qztools
