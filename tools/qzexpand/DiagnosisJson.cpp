// Reports for editors.

#include <nlohmann/json.hpp>

#include "Diagnosis.h"

namespace qztools {

namespace {

using Json = nlohmann::ordered_json;

Json FormatImports(const SourceTexts& texts, const Diagnosis& diagnosis) {
    Json imports = Json::array();
    if (diagnosis.text != nullptr)
        for (const Place& place : ImportsOf(texts, *diagnosis.text))
            imports.push_back({
                {"file", place.text->name},
                {"line", place.line      }
            });
    return imports;
}

}  // namespace

std::string FormatAsJson(const SourceTexts& texts, const Diagnosis& diagnosis) {
    Json object;
    object["severity"] = diagnosis.isWarning ? "warning" : "error";
    if (diagnosis.text != nullptr)
        object["file"] = diagnosis.text->name;
    if (diagnosis.place) {
        object["line"] = diagnosis.place->line;
        object["column"] = diagnosis.place->column + 1;
    }
    if (diagnosis.place && diagnosis.size != 0)
        object["endColumn"] = diagnosis.place->column + 1 + diagnosis.size;
    object["message"] = diagnosis.message;
    object["context"] = diagnosis.context;
    object["hints"] = diagnosis.hints;
    object["imports"] = FormatImports(texts, diagnosis);
    return object.dump() + '\n';
}

}  // namespace qztools
