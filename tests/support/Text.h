// What tests of texts and their errors share: printing, texts in exactly sized memory, and the
// error that an action throws as a value that can be compared.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/SubString.h"
#include "qzUtils/xstring.h"

namespace vorn {

// GoogleTest finds these by the namespace of the types.
inline void PrintTo(const SubString& s, std::ostream* os) {
    *os << testing::PrintToString(std::string(s.m_p1, s.m_p2));
}
inline void PrintTo(const xstring& s, std::ostream* os) {
    PrintTo(SubString(s), os);
}

}  // namespace vorn

namespace vorn_test {

// The bytes of a SubString or an xstring.
inline std::string Str(vorn::SubString s) {
    return std::string(s.m_p1, s.m_p2);
}

// A text in a block of the heap of exactly its size, so that AddressSanitizer sees a read of one
// byte in front of it or behind it.
class HeapText {
public:
    explicit HeapText(std::string_view text)
        : m_bytes(new char[text.size()]), m_size(static_cast<vorn::ssize_t>(text.size())) {
        if (!text.empty())
            std::memcpy(m_bytes.get(), text.data(), text.size());
    }

    const char* begin() const { return m_bytes.get(); }
    const char* end() const { return begin() + m_size; }
    vorn::SubString View() const { return vorn::SubString(begin(), end()); }

private:
    std::unique_ptr<char[]> m_bytes;
    vorn::ssize_t m_size;
};

// The address n bytes behind p, which may lie outside of p's text.
inline const char* Address(const char* p, std::intptr_t n) {
    return reinterpret_cast<const char*>(reinterpret_cast<std::intptr_t>(p) + n);
}

// A LexScannerException as tests compare it: the whole message, and its place as an offset.
struct LexError {
    std::string description;
    vorn::ssize_t offset;

    bool operator==(const LexError&) const = default;
};

inline void PrintTo(const LexError& error, std::ostream* os) {
    *os << testing::PrintToString(error.description) << " at " << error.offset;
}

// The error that action throws, with its place as an offset from text.
template <class Action>
LexError LexErrorOf(const char* text, Action&& action) {
    try {
        action();
    } catch (const vorn::LexScannerException& e) {
        const auto offset =
            reinterpret_cast<std::intptr_t>(e.m_pos) - reinterpret_cast<std::intptr_t>(text);
        return {Str(e.m_description), offset};
    }
    return {"(no error)", -1};
}

}  // namespace vorn_test
