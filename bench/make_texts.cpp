// make_texts DIR: writes the texts of the comparison, one file for each text and expander.

#include <cstdio>
#include <fstream>

#include "Texts.h"

namespace {

void Write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_texts DIR\n", stderr);
        return 2;
    }
    const std::filesystem::path dir = argv[1];
    const std::string verbatim = texts::Verbatim(texts::s_verbatimBytes);
    const struct {
        const char* name;
        const texts::Language& language;
    } s_expanders[] = {
        {"qz",  texts::s_qz },
        {"cpp", texts::s_cpp},
        {"m4",  texts::s_m4 }
    };
    for (const auto& expander : s_expanders) {
        const std::string ending = std::string(".") + expander.name;
        Write(dir / ("verbatim" + ending), expander.language.open + verbatim);
        Write(dir / ("uses" + ending), texts::Uses(expander.language, texts::s_uses));
        Write(dir / ("calls" + ending), texts::Calls(expander.language, texts::s_calls));
    }
}
