// The texts that the benchmarks and the comparison with other expanders run on.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/LSToken.h"

namespace texts {

inline constexpr long s_verbatimBytes = 20'000'000;
inline constexpr long s_uses = 1'000'000;
inline constexpr long s_calls = 300'000;
inline constexpr long s_macros = 1000;

inline bool IsScannable(std::string_view text) {
    vorn::SubString s(text.data(), text.data() + text.size());
    try {
        while (vorn::LsScanToken(s, true) != vorn::TOKEN_END) {
        }
    } catch (const vorn::LexScannerException&) {
        return false;
    }
    return true;
}

// The file without its preprocessor lines, so that every expander has the same work to do.
inline std::string ReadWithoutDirectives(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string result;
    bool continued = false;
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find_first_not_of(" \t");
        const bool directive = first != std::string::npos && line[first] == '#';
        if (!directive && !continued)
            result += line + '\n';
        continued = (directive || continued) && !line.empty() && line.back() == '\\';
    }
    return result;
}

// Some bytes of C headers, from below /usr/include, over and over if there are not enough.
inline const std::string& Headers() {
    static const std::string s_headers = [] {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(
                 "/usr/include", std::filesystem::directory_options::skip_permission_denied)) {
            if (entry.path().extension() == ".h" && entry.is_regular_file())
                paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::string result;
        for (const auto& path : paths) {
            const std::string text = ReadWithoutDirectives(path);
            // A byte that one of the other expanders takes for a quote of its own is left out.
            if (IsScannable(text) && text.find_first_of("\x01\x02@`") == std::string::npos)
                result += text;
        }
        return result;
    }();
    return s_headers;
}

inline std::string Verbatim(long bytes) {
    std::string result;
    while (static_cast<long>(result.size()) < bytes)
        result += Headers().substr(0, static_cast<std::size_t>(bytes) - result.size());
    // A cut may fall inside a string or comment: the last whole file end is not known, so the
    // text goes on to the end of what was begun, or back to where it scans.
    while (!IsScannable(result))
        result.resize(result.rfind("\n\n", result.size() - 3) + 1);
    return result;
}

// How the macros of a text are defined and called for one expander.
struct Language {
    const char* open;       // in front of everything
    const char* define;     // a macro without arguments: printf form of name number and value
    const char* functions;  // the macros with two and three arguments
    const char* prefix;     // of the names of functions that are called
};

inline constexpr Language s_qz = {
    "",
    "@def MACRO_%ld = value_%ld\n",
    "@def add(a, b) = ((a) + (b))\n@def mul3(a, b, c) = ((a) * (b) * (c))\n",
    "",
};
inline constexpr Language s_cpp = {
    "",
    "#define MACRO_%ld value_%ld\n",
    "#define add(a, b) ((a) + (b))\n#define mul3(a, b, c) ((a) * (b) * (c))\n",
    "",
};
inline constexpr Language s_m4 = {
    "m4_changequote(\x01,\x02)m4_changecom()m4_dnl\n",
    "m4_define(\x01MACRO_%ld\x02,\x01value_%ld\x02)m4_dnl\n",
    "m4_define(\x01"
    "add\x02,\x01(($1) + ($2))\x02)m4_dnl\n"
    "m4_define(\x01mul3\x02,\x01(($1) * ($2) * ($3))\x02)m4_dnl\n",
    "",
};

inline std::string Format(const char* form, long a, long b) {
    char line[160];
    return std::string(line,
                       static_cast<std::size_t>(std::snprintf(line, sizeof line, form, a, b)));
}

// Macros without arguments, and uses of them scattered in code, four a line.
inline std::string Uses(const Language& language, long uses) {
    std::string result = language.open;
    for (long i = 0; i < s_macros; ++i)
        result += Format(language.define, i, i * 7);
    unsigned long random = 1;
    const auto next = [&random] {
        random = random * 6364136223846793005UL + 1442695040888963407UL;
        return static_cast<long>((random >> 33) % static_cast<unsigned long>(s_macros));
    };
    for (long i = 0; i < uses; i += 4) {
        result += Format("    table[MACRO_%ld] = compute(left, MACRO_%ld) +", next(), next());
        result += Format(" offset_of(MACRO_%ld, \"text\") * MACRO_%ld; // done\n", next(), next());
    }
    return result;
}

// Calls with two and three arguments, a third of them nested; six a line.
inline std::string Calls(const Language& language, long calls) {
    std::string result = std::string(language.open) + language.functions;
    for (long i = 0; i < calls; i += 6) {
        result += Format("    int x%ld = add(first, %ld) - mul3(x, y[2], 7);\n", i, i);
        result += Format("    int y%ld = add(mul3(p, q, %ld), add(r, s)) * mul3(1, 2, z);\n", i, i);
    }
    return result;
}

}  // namespace texts
