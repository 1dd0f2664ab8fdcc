#include "MapFile.h"

#include <filesystem>
#include <string_view>

#include "SourceMapV3.h"
#include "common/Views.h"

namespace qztools {

namespace fs = std::filesystem;

// ---- names -------------------------------------------------------------------------------------

namespace {

// The way by names alone; empty where they do not tell.
fs::path LexicalPath(const fs::path& folder, const fs::path& file) {
    const fs::path from = folder.lexically_normal();
    const fs::path to = file.lexically_normal();
    if (from.is_absolute() == to.is_absolute())
        return to.lexically_relative(from);
    std::error_code error;
    return fs::absolute(to, error).lexically_relative(fs::absolute(from, error));
}

// The folder of a file; the file itself need not be there.
fs::path FolderOf(const fs::path& file) {
    const fs::path folder = file.parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

bool IsSameFolder(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::equivalent(a, b, error) && !error;
}

}  // namespace

std::string PathFrom(const std::string& folder, const std::string& file) {
    const fs::path from = folder.empty() ? fs::path(".") : fs::path(folder);
    const fs::path byName = LexicalPath(from, file);
    if (!byName.empty() && IsSameFolder(from / FolderOf(byName), FolderOf(file)))
        return byName.string();
    std::error_code error;
    const fs::path realFrom = fs::weakly_canonical(from, error);
    const fs::path realTo = fs::weakly_canonical(FolderOf(file), error) / fs::path(file).filename();
    const std::string byPlace = realTo.lexically_relative(realFrom).string();
    return byPlace.empty() ? file : byPlace;
}

// ---- the map -----------------------------------------------------------------------------------

namespace {

// REQUIRES: there is to be one. A standard output has no folder, so what goes there is seen from
// the working folder.
std::string FolderOfMap(const Options& options) {
    return *options.map == "-" ? std::string() : fs::path(*options.map).parent_path().string();
}

// What can be read once only, such as a pipe, is no file for who reads the map later.
bool IsFile(const SourceText& text) {
    std::error_code error;
    return !text.path.empty() && fs::is_regular_file(text.path, error);
}

MapSource ToMapSource(const SourceText& text, const std::string& folder) {
    const std::string_view bytes = ToView(text.Bytes());
    if (!IsFile(text))
        return {text.name, std::ssize(bytes), HashOf(bytes), std::string(bytes)};
    return {PathFrom(folder, text.path), std::ssize(bytes), HashOf(bytes), std::nullopt};
}

}  // namespace

std::string FormatMapFile(const Options& options, const MappedText& mapped,
                          const MapSources& sources) {
    const std::string folder = FolderOfMap(options);
    const std::string_view output = ToView(mapped.text);
    Map map;
    map.outputName = options.output == "-" ? "-" : PathFrom(folder, options.output);
    map.outputSize = std::ssize(output);
    map.outputHash = HashOf(output);
    map.pieces = mapped.pieces;
    std::vector<std::string_view> texts;
    for (const SourceText* text : sources.Texts()) {
        map.sources.push_back(ToMapSource(*text, folder));
        texts.push_back(ToView(text->Bytes()));
    }
    return options.mapFormat == MapFormat::V3 ? FormatSourceMapV3(map, output, texts)
                                              : FormatMap(map);
}

}  // namespace qztools
