// What tests of embedded Python share: a fresh interpreter for each, what it prints, and Python's
// own functions.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "qzMacroExpander/MacroExpand.h"
#include "tests/support/Text.h"

namespace vorn_test {

// A function or variable of the Python library that the process runs with. The tests see it as
// the library under test does: by name, without Python's header.
template <class T>
T* OfPython(const char* name) {
    void* address = dlsym(RTLD_DEFAULT, name);
    if (address == nullptr)
        throw std::runtime_error(std::string("Python has no ") + name);
    return reinterpret_cast<T*>(address);
}

inline bool PythonIsRunning() {
    return OfPython<int()>("Py_IsInitialized")() != 0;
}

// ---- running Python directly -------------------------------------------------------------------

// A text with the position that errors are reported at.
inline constexpr char s_source[] = "some macro text";
inline constexpr vorn::ssize_t s_offset = 5;
inline constexpr vorn::ConstStringZ s_errorPos = s_source + s_offset;

inline LexError At(const std::string& description) {
    return {description, s_offset};
}

inline vorn::xstring Text(const std::string& s) {
    return vorn::xstring(s.data(), s.data() + s.size());
}

// Runs statements; the error of some that fail.
inline void Exec(const std::string& code, const std::string& path = "") {
    vorn::RunPython(Text(path), Text(code), s_errorPos);
}
inline LexError ExecError(const std::string& code, const std::string& path = "") {
    return LexErrorOf(s_source, [&] { Exec(code, path); });
}

// The text of an expression's value; the error of one that has none.
inline std::string Eval(const std::string& expression) {
    vorn::xstring result;
    vorn::EvalPythonExpression(Text(expression), result, s_errorPos);
    return Str(result);
}
inline LexError EvalError(const std::string& expression) {
    return LexErrorOf(s_source, [&] { Eval(expression); });
}

// The result of InitPython and what it makes of a text that was there before.
inline std::pair<bool, std::string> Init() {
    vorn::xstring errorString("as before");
    const bool result = vorn::InitPython(errorString);
    return {result, Str(errorString)};
}
inline const std::pair<bool, std::string> s_initSucceeds(true, "as before");

// ---- surroundings ------------------------------------------------------------------------------

// What reaches the process's standard output while action runs.
inline std::string StdoutOf(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

// A directory with Python modules in it, for as long as the object lives.
class ModuleDirectory {
public:
    ModuleDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "modules-").string();
        name.append(6, 'X');  // what mkdtemp replaces
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("can't make a directory like " + name);
        m_path = name;
    }
    ~ModuleDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ModuleDirectory(const ModuleDirectory&) = delete;
    ModuleDirectory& operator=(const ModuleDirectory&) = delete;

    std::string Path() const { return m_path.string(); }
    std::string Path(const std::string& name) const { return (m_path / name).string(); }
    void Write(const std::string& name, std::string_view text) const {
        std::ofstream(m_path / name, std::ios::binary) << text;
    }

private:
    std::filesystem::path m_path;
};

// Each test starts and ends without an interpreter.
class PythonTest : public testing::Test {
protected:
    PythonTest() { vorn::UninitPython(); }
    ~PythonTest() override { vorn::UninitPython(); }

    // Code that makes modules of a directory importable.
    static std::string ImportFrom(const ModuleDirectory& directory) {
        return "import sys\nsys.dont_write_bytecode = True\nsys.path.insert(0, '" + directory.Path()
               + "')\n";
    }
};

}  // namespace vorn_test
