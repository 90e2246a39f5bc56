#pragma once
// A folder of a test's own, and a limit to what may be written into it.

#include "platform/automation/Bstr.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace kv::test {

/// Removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kvtest-XXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::filesystem::path Path() const { return m_path; }
    std::string PathOf(std::string_view name) const { return (m_path / name).string(); }
    /// The path of a file in the folder, for the library.
    Bstr File(std::string_view name) const { return Bstr((m_path / name).u16string()); }

    void Write(std::string_view name, std::string_view content) const
    {
        std::ofstream(m_path / name, std::ios::binary) << content;
    }

    std::string Read(std::string_view name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::ptrdiff_t Entries() const
    {
        return std::distance(std::filesystem::directory_iterator(m_path), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_path;
};

/// Within its scope no file of the process grows beyond a size, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace kv::test
