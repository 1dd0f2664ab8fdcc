#include "Html.h"

#include <algorithm>

#include "Check.h"
#include "PageFiles.h"
#include "common/Visible.h"

namespace qztools {

namespace {

using Kind = MapPiece::Kind;

// ---- forms of data -----------------------------------------------------------------------------

std::string Base64(std::string_view bytes) {
    constexpr char s_digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [bytes, i](std::size_t k) -> unsigned {
            return i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u;
        };
        const unsigned group = byte(0) << 16 | byte(1) << 8 | byte(2);
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3) + 1;
        for (std::size_t k = 0; k < 4; ++k)
            out += k < count ? s_digits[group >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

// Seven bits in a byte, the low ones first.
void AppendNumber(std::string& out, std::uint64_t number) {
    for (; number >= 128; number >>= 7)
        out += static_cast<char>(number | 128);
    out += static_cast<char>(number);
}

// Small distances give small numbers, whatever their sign: 0, -1, 1, -2 give 0, 1, 2, 3.
void AppendDistance(std::string& out, std::int64_t distance) {
    const auto twice = static_cast<std::uint64_t>(distance) * 2;
    AppendNumber(out, distance < 0 ? ~twice : twice);
}

// A text in the page: characters that mean something to HTML are written by their numbers.
std::string ForHtml(std::string_view text) {
    std::string out;
    for (const char c : VisibleName(text)) {
        if (c == '<' || c == '>' || c == '&' || c == '"' || c == '\'')
            out += "&#" + std::to_string(static_cast<int>(c)) + ';';
        else
            out += c;
    }
    return out;
}

// A string of JSON. No < is in it, so that it cannot end the element that it stands in.
std::string ForJson(std::string_view text) {
    std::string out("\"");
    for (const char c : VisibleName(text)) {
        if (c == '<')
            out += "\\u003c";
        else if (c == '"' || c == '\\')
            out += {'\\', c};
        else
            out += c;
    }
    return out + '"';
}

// ---- the data of the page ----------------------------------------------------------------------

// The pieces as page.js reads them, and the bytes of those that were not copied.
struct Packed {
    std::string pieces;
    std::string rest;
};

Packed Pack(const LoadedMap& map) {
    Packed packed;
    std::vector<std::int64_t> ends(static_cast<std::size_t>(map.SourceCount()));
    for (std::size_t i = 0; i < map.Pieces().size(); ++i) {
        const MapPiece& piece = map.Pieces()[i];
        AppendNumber(packed.pieces, static_cast<std::uint64_t>(piece.size) * 4
                                        + static_cast<std::uint64_t>(piece.kind));
        if (piece.source >= 0) {
            std::int64_t& end = ends[static_cast<std::size_t>(piece.source)];
            AppendNumber(packed.pieces, static_cast<std::uint64_t>(piece.source));
            AppendDistance(packed.pieces, piece.offset - end);
            end = piece.offset + piece.length;
        }
        if (piece.kind == Kind::Calculated)
            AppendNumber(packed.pieces, static_cast<std::uint64_t>(piece.length));
        if (piece.kind != Kind::Copied)
            packed.rest += map.Output().Bytes().substr(static_cast<std::size_t>(map.StartOf(i)),
                                                       static_cast<std::size_t>(piece.size));
    }
    return packed;
}

std::string MakeData(const LoadedMap& map) {
    const Packed packed = Pack(map);
    std::string data = "{\"output\":" + ForJson(map.Output().Name())
                       + ",\"size\":" + std::to_string(map.Output().Size())
                       + ",\"count\":" + std::to_string(map.Pieces().size()) + ",\"sources\":[";
    for (std::int64_t i = 0; i < map.SourceCount(); ++i) {
        data += i > 0 ? "," : "";
        data += "{\"name\":" + ForJson(map.Source(i).Name()) + ",\"bytes\":\""
                + Base64(map.Source(i).Bytes()) + "\"}";
    }
    data += "],\"pieces\":\"" + Base64(packed.pieces) + "\",\"rest\":\"" + Base64(packed.rest);
    return data + "\"}";
}

// What goes in for a word of the template.
std::string Fill(std::string_view word, const LoadedMap& map) {
    if (word == "css")
        return s_css;
    if (word == "js")
        return s_js;
    return word == "data" ? MakeData(map) : ForHtml(map.Output().Name());
}

}  // namespace

std::string MakePage(const Options& options) {
    const LoadedMap map(options.maps.front(), options.whereabouts);
    Check(map);  // the page puts the output together from the sources
    std::string page;
    std::string_view rest(s_html);
    for (std::size_t at = rest.find("{{"); at != std::string_view::npos; at = rest.find("{{")) {
        const std::size_t end = rest.find("}}", at);
        page += rest.substr(0, at);
        page += Fill(rest.substr(at + 2, end - at - 2), map);
        rest.remove_prefix(end + 2);
    }
    page += rest;
    return page;
}

}  // namespace qztools
