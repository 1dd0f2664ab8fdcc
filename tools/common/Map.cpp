#include "common/Map.h"

#include <algorithm>
#include <array>

#include <nettle/base64.h>
#include <nettle/sha2.h>
#include <nlohmann/json.hpp>

#include "common/Fault.h"
#include "common/Json.h"
#include "common/Vlq.h"

namespace qztools {

using nlohmann::json;

// ---- hashes and base64 -------------------------------------------------------------------------

namespace {

constexpr std::string_view s_hashKind = "sha256:";
constexpr std::string_view s_hexDigits = "0123456789abcdef";

const std::uint8_t* ToBytes(std::string_view s) {
    return reinterpret_cast<const std::uint8_t*>(s.data());
}

bool IsHash(std::string_view s) {
    return s.starts_with(s_hashKind) && s.size() == s_hashKind.size() + 2 * SHA256_DIGEST_SIZE
           && s.find_first_not_of(s_hexDigits, s_hashKind.size()) == std::string_view::npos;
}

std::string EncodeBase64(std::string_view bytes) {
    std::string out(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
    ::nettle_base64_encode_raw(out.data(), bytes.size(), ToBytes(bytes));
    return out;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    base64_decode_ctx context;
    ::nettle_base64_decode_init(&context);
    std::string out(BASE64_DECODE_LENGTH(text.size()), '\0');
    std::size_t size = out.size();
    auto* bytes = reinterpret_cast<std::uint8_t*>(out.data());
    if (::nettle_base64_decode_update(&context, &size, bytes, text.size(), text.data()) == 0
        || ::nettle_base64_decode_final(&context) == 0)
        return std::nullopt;
    out.resize(size);
    return out;
}

}  // namespace

std::string HashOf(std::string_view bytes) {
    sha256_ctx context;
    ::nettle_sha256_init(&context);
    ::nettle_sha256_update(&context, bytes.size(), ToBytes(bytes));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    ::nettle_sha256_digest(&context, digest.size(), digest.data());
    std::string hash(s_hashKind);
    for (const std::uint8_t byte : digest)
        hash += {s_hexDigits[byte >> 4], s_hexDigits[byte & 15]};
    return hash;
}

// ---- writing -----------------------------------------------------------------------------------

namespace {

constexpr std::string_view s_format = "qzmap";
constexpr int s_version = 1;
constexpr std::size_t s_lineWidth = 90;  // at which the pieces go on in a new line

std::string QuoteName(const std::string& name) {
    std::optional<std::string> quoted = QuoteJson(name);
    if (!quoted)
        throw Fault(name + ": a map cannot hold this name, which is no UTF-8");
    return *quoted;
}

std::string FormatFile(const std::string& name, std::int64_t size, const std::string& hash) {
    return "{\"name\": " + QuoteName(name) + ", \"size\": " + std::to_string(size)
           + ", \"hash\": \"" + hash + "\"}";
}

std::string FormatSource(const MapSource& source) {
    if (!source.text)
        return FormatFile(source.name, source.size, source.hash);
    const std::optional<std::string> text = QuoteJson(*source.text);
    return "{\"name\": " + QuoteName(source.name)
           + (text ? ", \"text\": " + *text : ", \"base64\": \"" + EncodeBase64(*source.text) + '"')
           + '}';
}

void AppendNumbers(std::string& out, std::initializer_list<std::int64_t> numbers) {
    for (const std::int64_t number : numbers)
        AppendVlq(out, number);
}

// The two marks of each source, from which distances count.
class Marks {
public:
    explicit Marks(std::size_t sources) : m_offsets(2 * sources) {}

    // The number of the mark that lies better for a piece.
    std::size_t Choose(const MapPiece& piece) const {
        const std::size_t first = 2 * static_cast<std::size_t>(piece.source);
        const int firstSize = VlqSize(piece.offset - m_offsets.at(first));
        return VlqSize(piece.offset - m_offsets.at(first + 1)) < firstSize ? first + 1 : first;
    }

    std::int64_t& operator[](std::size_t number) { return m_offsets[number]; }

private:
    std::vector<std::int64_t> m_offsets;
};

void AppendPiece(std::string& out, const MapPiece& piece, Marks& marks) {
    using Kind = MapPiece::Kind;
    if (piece.kind == Kind::Indentation)
        return AppendNumbers(out, {piece.size});
    if (piece.kind == Kind::Inserted)
        return AppendNumbers(out, {piece.size, -1});
    const std::size_t number = marks.Choose(piece);
    const std::int64_t distance = piece.offset - marks[number];
    marks[number] = piece.offset + piece.length;
    AppendNumbers(out, {piece.size, static_cast<std::int64_t>(number), distance});
    if (piece.kind == Kind::Calculated)
        AppendVlq(out, piece.length);
}

void AppendPieces(std::string& out, const Map& map) {
    Marks marks(map.sources.size());
    std::size_t lineStart = out.rfind('\n') + 1;
    const char* before = "\"";
    for (const MapPiece& piece : map.pieces) {
        if (out.size() - lineStart > s_lineWidth) {
            before = "\",\n\"";
            lineStart = out.size();
        }
        out += before;
        AppendPiece(out, piece, marks);
        before = ",";
    }
    if (!map.pieces.empty())
        out += '"';
}

}  // namespace

std::string FormatMap(const Map& map) {
    std::string out =
        "{\"format\": \"" + std::string(s_format) + "\", \"version\": " + std::to_string(s_version)
        + ",\n \"output\": " + FormatFile(map.outputName, map.outputSize, map.outputHash)
        + ",\n \"sources\": [";
    const char* before = "\n  ";
    for (const MapSource& source : map.sources) {
        out += before + FormatSource(source);
        before = ",\n  ";
    }
    out += "],\n \"pieces\": [";
    AppendPieces(out, map);
    out += "]}\n";
    return out;
}

// ---- the rules for pieces ----------------------------------------------------------------------

namespace {

// What is wrong with a map; the caller knows the map's name.
class MapError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] void Refuse(const std::string& reason) {
    throw MapError(reason);
}

[[noreturn]] void RefusePiece(std::size_t index, const char* reason) {
    Refuse("piece " + std::to_string(index) + ' ' + reason);
}

// One piece as it stands in the file.
struct Record {
    std::array<std::int64_t, 4> numbers{};
    std::size_t count = 0;
};

// Turns the distances into offsets, and checks that every piece lies in its source and that all
// of them cover the output exactly. No sum is formed before it is known to fit.
class PieceDecoder {
public:
    explicit PieceDecoder(const Map& map) : m_map(map), m_marks(2 * map.sources.size()) {}

    MapPiece Decode(const Record& record) {
        using Kind = MapPiece::Kind;
        MapPiece piece;
        piece.size = record.numbers[0];
        if (record.count == 0 || piece.size <= 0)
            RefusePiece(m_index, "has no size above 0");
        if (piece.size > m_map.outputSize - m_outputEnd)
            RefusePiece(m_index, "reaches behind the end of the output");
        m_outputEnd += piece.size;
        if (record.count == 1)
            piece.kind = Kind::Indentation;
        else if (record.count > 2)
            Locate(piece, record);
        else if (record.numbers[1] != -1)
            RefusePiece(m_index, "has a source and no offset");
        ++m_index;
        return piece;
    }

    void CheckEnd() const {
        if (m_outputEnd != m_map.outputSize)
            Refuse("the pieces cover " + std::to_string(m_outputEnd) + " bytes of an output of "
                   + std::to_string(m_map.outputSize));
    }

private:
    void Locate(MapPiece& piece, const Record& record) {
        const std::int64_t number = record.numbers[1];
        if (number < 0 || number >= std::ssize(m_marks))
            RefusePiece(m_index, "has a source that is not there");
        piece.source = number / 2;
        const std::int64_t size = m_map.sources[static_cast<std::size_t>(piece.source)].size;
        const bool isCopied = record.count == 3;
        piece.kind = isCopied ? MapPiece::Kind::Copied : MapPiece::Kind::Calculated;
        piece.length = isCopied ? piece.size : record.numbers[3];
        const std::int64_t distance = record.numbers[2];
        std::int64_t& mark = m_marks[static_cast<std::size_t>(number)];  // from 0 to size
        if (distance < -mark || distance > size - mark || piece.length < 0
            || piece.length > size - (mark + distance))
            RefusePiece(m_index, "reaches outside its source");
        piece.offset = mark + distance;
        mark = piece.offset + piece.length;
    }

    const Map& m_map;
    std::vector<std::int64_t> m_marks;  // two for each source
    std::int64_t m_outputEnd = 0;
    std::size_t m_index = 0;
};

}  // namespace

// ---- reading -----------------------------------------------------------------------------------

namespace {

// The parts of a map that hold fields or elements.
enum class Part { Outside, Map, Output, Sources, Source, Pieces };

enum class Type { String, Number, Object, Array };

// A field that an object may have, and the part that it leads into.
struct Field {
    Part part;
    std::string_view name;
    Type type;
    Part inside;  // Outside for what holds no parts
};

constexpr Field s_fields[] = {
    {Part::Map,    "format",  Type::String, Part::Outside},
    {Part::Map,    "version", Type::Number, Part::Outside},
    {Part::Map,    "output",  Type::Object, Part::Output },
    {Part::Map,    "sources", Type::Array,  Part::Sources},
    {Part::Map,    "pieces",  Type::Array,  Part::Pieces },
    {Part::Output, "name",    Type::String, Part::Outside},
    {Part::Output, "size",    Type::Number, Part::Outside},
    {Part::Output, "hash",    Type::String, Part::Outside},
    {Part::Source, "name",    Type::String, Part::Outside},
    {Part::Source, "size",    Type::Number, Part::Outside},
    {Part::Source, "hash",    Type::String, Part::Outside},
    {Part::Source, "text",    Type::String, Part::Outside},
    {Part::Source, "base64",  Type::String, Part::Outside},
};

constexpr const char* s_typeNames[] = {"a string", "a whole number", "an object", "a list"};

std::string QuoteField(std::string_view name) {
    return "the field \"" + std::string(name) + '"';
}

// Takes the events of the parser. The form of a map is the table above and these functions: what
// it does not have is refused where it begins, so nothing is ever nested deeper than a map is.
class Reader : public nlohmann::json_sax<json> {
public:
    Map Result() && {
        PieceDecoder decoder(m_map);
        m_map.pieces.reserve(m_records.size());
        for (const Record& record : m_records)
            m_map.pieces.push_back(decoder.Decode(record));
        decoder.CheckEnd();
        return std::move(m_map);
    }

    bool null() override { RefuseValue(); }
    bool boolean(bool) override { RefuseValue(); }
    bool number_float(double, const std::string&) override { RefuseValue(); }
    bool binary(binary_t&) override { RefuseValue(); }

    bool number_unsigned(std::uint64_t value) override {
        if (value > INT64_MAX)
            RefuseValue();
        return number_integer(static_cast<std::int64_t>(value));
    }

    bool number_integer(std::int64_t value) override {
        TakeNumber(Expect(Type::Number).name, value);
        return true;
    }

    bool string(std::string& value) override {
        if (m_part == Part::Pieces)
            TakeRecords(value);
        else
            TakeString(Expect(Type::String).name, value);
        return true;
    }

    bool start_object(std::size_t) override {
        if (m_part == Part::Outside && !m_isBegun)
            Enter(Part::Map);
        else if (m_part == Part::Sources)
            Enter(Part::Source);
        else
            Enter(Expect(Type::Object).inside);
        return true;
    }

    bool start_array(std::size_t) override {
        Enter(Expect(Type::Array).inside);
        return true;
    }

    bool key(std::string& name) override {
        const auto found =
            std::find_if(std::begin(s_fields), std::end(s_fields), [this, &name](const Field& f) {
                return f.part == m_part && f.name == name;
            });
        if (found == std::end(s_fields))
            Refuse(QuoteField(name) + " is not known");
        if (Has(*found))
            Refuse(QuoteField(name) + " stands there twice");
        m_field = &*found;
        m_seen |= BitOf(*found);
        return true;
    }

    bool end_object() override {
        if (m_part == Part::Source) {
            EndSource();
            Leave(Part::Sources);
        } else {
            RequireFields();
            Leave(m_part == Part::Output ? Part::Map : Part::Outside);
        }
        return true;
    }

    bool end_array() override {
        Leave(Part::Map);
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const json::exception&) override {
        Refuse("no JSON at byte " + std::to_string(position));
    }

private:
    static unsigned BitOf(const Field& field) { return 1u << (&field - s_fields); }
    bool Has(const Field& field) const { return (m_seen & BitOf(field)) != 0; }
    bool HasSource(std::string_view name) const {
        return std::any_of(std::begin(s_fields), std::end(s_fields), [&](const Field& f) {
            return f.part == Part::Source && f.name == name && Has(f);
        });
    }

    [[noreturn]] void RefuseValue() const {
        if (m_part == Part::Pieces)
            Refuse("the pieces are not strings alone");
        if (m_part == Part::Sources)
            Refuse("source " + std::to_string(m_map.sources.size()) + " is no object");
        if (m_field == nullptr)
            Refuse("it is no object");
        Refuse(QuoteField(m_field->name) + " is not "
               + s_typeNames[static_cast<std::size_t>(m_field->type)]);
    }

    // The field to which the value belongs that comes next.
    const Field& Expect(Type type) const {
        const bool isObject =
            m_part == Part::Map || m_part == Part::Output || m_part == Part::Source;
        if (!isObject || m_field->type != type)
            RefuseValue();
        return *m_field;
    }

    void Enter(Part part) {
        m_part = part;
        m_isBegun = true;
        if (part == Part::Source)
            m_map.sources.emplace_back();
    }

    // The fields of an object that has been left may come again, in the next source.
    void Leave(Part outer) {
        for (const Field& field : s_fields)
            if (field.part == m_part && m_part != Part::Map)
                m_seen &= ~BitOf(field);
        m_part = outer;
    }

    void TakeRecords(std::string_view text) {
        while (true) {
            TakeRecord(text);
            if (text.empty())
                return;
            text.remove_prefix(1);
        }
    }

    // Takes a record off the start of text, up to the comma behind it.
    void TakeRecord(std::string_view& text) {
        Record record;
        while (!text.empty() && text.front() != ',') {
            const std::optional<std::int64_t> number = ReadVlq(text);
            if (!number)
                RefusePiece(m_records.size(), "is no record of numbers");
            if (record.count == record.numbers.size())
                RefusePiece(m_records.size(), "has more than four numbers");
            record.numbers[record.count++] = *number;
        }
        m_records.push_back(record);
    }

    void TakeNumber(std::string_view name, std::int64_t value) {
        if (name == "version" && value != s_version)
            Refuse("version " + std::to_string(value) + " of the format is not known");
        if (value < 0)
            Refuse(QuoteField(name) + " is below 0");
        if (name == "size")
            (m_part == Part::Source ? m_map.sources.back().size : m_map.outputSize) = value;
    }

    void TakeString(std::string_view name, std::string& value) {
        const bool inSource = m_part == Part::Source;
        if (name == "format" && value != s_format)
            Refuse(QuoteField(name) + " is not \"" + std::string(s_format) + '"');
        if (name == "name" && value.find('\0') != std::string::npos)
            Refuse(QuoteField("name") + " has a zero byte");
        if (name == "name")
            (inSource ? m_map.sources.back().name : m_map.outputName) = std::move(value);
        else if (name == "hash")
            (inSource ? m_map.sources.back().hash : m_map.outputHash) = TakeHash(value);
        else if (name == "text")
            m_map.sources.back().text = std::move(value);
        else if (name == "base64")
            m_map.sources.back().text = TakeBase64(value);
    }

    static std::string TakeHash(std::string& value) {
        if (!IsHash(value))
            Refuse(QuoteField("hash") + " is not sha256: and 64 hexadecimal digits");
        return std::move(value);
    }

    static std::string TakeBase64(const std::string& value) {
        std::optional<std::string> bytes = DecodeBase64(value);
        if (!bytes)
            Refuse(QuoteField("base64") + " is not in base64");
        return *bytes;
    }

    void RequireFields() const {
        for (const Field& field : s_fields)
            if (field.part == m_part && !Has(field))
                Refuse(QuoteField(field.name) + " is missing");
    }

    // A file has a size and a hash; any other source has its bytes in one of two forms.
    void EndSource() {
        const std::string which = "source " + std::to_string(m_map.sources.size() - 1);
        MapSource& source = m_map.sources.back();
        const int texts = HasSource("text") + HasSource("base64");
        const int facts = HasSource("size") + HasSource("hash");
        if (!HasSource("name"))
            Refuse(which + " has no name");
        if (!(texts == 1 && facts == 0) && !(texts == 0 && facts == 2))
            Refuse(which + " has neither just a size and a hash nor just a text");
        if (!source.text)
            return;
        source.size = std::ssize(*source.text);
        source.hash = HashOf(*source.text);
    }

    Map m_map;
    std::vector<Record> m_records;
    Part m_part = Part::Outside;
    bool m_isBegun = false;
    const Field* m_field = nullptr;  // the last one that was named
    unsigned m_seen = 0;             // a bit for each field
};

}  // namespace

Map ParseMap(const std::string& name, std::string_view text) {
    try {
        Reader reader;
        json::sax_parse(text.begin(), text.end(), &reader);
        return std::move(reader).Result();
    } catch (const MapError& e) {
        throw Fault(name + ": no map: " + e.what());
    }
}

}  // namespace qztools
