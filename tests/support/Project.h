// What tests of projects share: a folder of files that lives as long as the test, what is written
// to standard error, and a parser that finds files in the folder.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "qzMacroExpander/Mpfw.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn_test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "qz_test_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::filesystem::filesystem_error(
                "mkdtemp", name, std::error_code(errno, std::generic_category()));
        m_path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    void Write(const std::string& name, std::string_view text) const {
        const std::filesystem::path path = m_path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        file << text;
        ASSERT_TRUE(file.flush()) << path;
    }

    vorn::xstring Path(const std::string& name) const {
        return vorn::xstring((m_path / name).string().c_str());
    }

    // A text that names files of this folder, with the folder's own name taken out.
    std::string Shorten(std::string text) const {
        const std::string folder = m_path.string() + '/';
        for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;)
            text.erase(at, folder.size());
        return text;
    }

private:
    std::filesystem::path m_path;
};

// What action writes to standard error, by whatever means.
template <class Action>
std::string StandardErrorOf(Action&& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

// Finds files in a folder, or else in the search paths of the project below it, and remembers
// what it was asked. It parses an imported file as imports alone, with a parser of its own.
class FolderParser : public vorn::MpfwParser {
public:
    FolderParser(vorn::MpfwFrame& frame, const TemporaryFolder& folder)
        : MpfwParser(frame), m_folder(folder) {}

    std::vector<std::string> m_resolved;             // what ResolveImportPath was given
    std::vector<vorn::MpfwSourceFile*> m_processed;  // what ProcessImportedFile was given

    bool ResolveImportPath(const vorn::xstring& importPath, vorn::xstring& localPath) override {
        const std::string name = Str(importPath);
        m_resolved.push_back(name);
        if (Exists(name, localPath))
            return true;
        for (const vorn::xstring& path : m_frame.m_importPaths) {
            if (Exists(Str(path) + '/' + name, localPath))
                return true;
        }
        return false;
    }

    void ProcessImportedFile(vorn::MpfwSourceFile* srcFile) override {
        m_processed.push_back(srcFile);
    }

private:
    bool Exists(const std::string& name, vorn::xstring& localPath) const {
        const vorn::xstring path = m_folder.Path(name);
        if (!std::filesystem::exists(Str(path)))
            return false;
        localPath = path;
        return true;
    }

    const TemporaryFolder& m_folder;
};

// A project in a folder of its own.
class FolderProject {
public:
    TemporaryFolder m_folder;
    vorn::MpfwSourceFileList m_files;
    vorn::MpfwFrame m_frame{m_files};
    FolderParser m_parser{m_frame, m_folder};
    std::string m_trace;  // what the last AddFile reported, without the folder's name

    vorn::MpfwSourceFile* AddFile(const std::string& name, std::string_view extra = "") {
        vorn::MpfwSourceFile* file = nullptr;
        m_trace = m_folder.Shorten(StandardErrorOf([&] {
            file = m_parser.AddFile(m_folder.Path(name),
                                    vorn::SubString(extra.data(), extra.data() + extra.size()));
        }));
        return file;
    }

    // The report of an error, without the folder's name.
    std::string Report(const vorn::LexScannerException& e) const {
        vorn::StringStream os(4096);
        m_files.WriteLexScannerError(os, e);
        return m_folder.Shorten(Str(os.GetString()));
    }

    // The names of all files, in the order of the list.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const vorn::MpfwSourceFile* file : m_files)
            names.push_back(m_folder.Shorten(Str(file->m_localPath)));
        return names;
    }
};

}  // namespace vorn_test
