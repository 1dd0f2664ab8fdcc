#include "common/Vlq.h"

namespace qztools {

namespace {

constexpr std::string_view s_digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int s_bits = 5;
constexpr std::uint64_t s_goesOn = 1 << s_bits;

// The value of each byte as a digit, 64 for those that are none.
struct DigitValues {
    std::uint8_t values[256];

    constexpr DigitValues() : values() {
        for (std::uint8_t& value : values)
            value = 64;
        for (std::size_t i = 0; i < s_digits.size(); ++i)
            values[static_cast<unsigned char>(s_digits[i])] = static_cast<std::uint8_t>(i);
    }
};

constexpr DigitValues s_values;

}  // namespace

namespace {

std::uint64_t WithSign(std::int64_t number) {
    return static_cast<std::uint64_t>(number < 0 ? -number : number) << 1 | (number < 0 ? 1 : 0);
}

}  // namespace

void AppendVlq(std::string& out, std::int64_t number) {
    std::uint64_t rest = WithSign(number);
    do {
        const std::uint64_t digit = rest & (s_goesOn - 1);
        rest >>= s_bits;
        out += s_digits[digit | (rest != 0 ? s_goesOn : 0)];
    } while (rest != 0);
}

int VlqSize(std::int64_t number) {
    int size = 1;
    for (std::uint64_t rest = WithSign(number) >> s_bits; rest != 0; rest >>= s_bits)
        ++size;
    return size;
}

std::optional<std::int64_t> ReadVlq(std::string_view& s) {
    std::uint64_t number = 0;
    for (int shift = 0; !s.empty() && shift < 64; shift += s_bits) {
        const std::uint64_t digit = s_values.values[static_cast<unsigned char>(s.front())];
        const std::uint64_t bits = digit & (s_goesOn - 1);
        if (digit >= s_digits.size() || bits << shift >> shift != bits)
            return std::nullopt;
        s.remove_prefix(1);
        number |= bits << shift;
        if ((digit & s_goesOn) == 0) {
            const auto size = static_cast<std::int64_t>(number >> 1);
            return (number & 1) != 0 ? -size : size;
        }
    }
    return std::nullopt;
}

}  // namespace qztools
