#include "MediaFiles.h"

#include "platform/automation/Bstr.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kvproject {
namespace {

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

/// Of the path as kv::ToHostPath reads it: the longest part of it that exists by the name as it stands, and the rest
/// with "\" read as "/". May take for ever.
FileKind Look(char* path)
{
    struct stat status {};
    const std::size_t size = std::strlen(path);
    std::size_t kept = std::strchr(path, '\\') ? size : 0;
    while (kept > 0) {
        const char next = std::exchange(path[kept], '\0');
        const bool exists = stat(path, &status) == 0;
        path[kept] = next;
        if (exists) break;
        while (kept > 0 && !IsSeparator(path[--kept])) {
        }
    }
    std::replace(path + kept, path + size, '\\', '/');
    if (stat(path, &status) != 0) return FileKind::Missing;
    if (S_ISREG(status.st_mode)) return FileKind::File;
    return S_ISDIR(status.st_mode) ? FileKind::Folder : FileKind::Other;
}

/// A process that looks at files. No call of this one can be caught in a file system that does not answer.
class Prober {
public:
    Prober() = default;
    ~Prober() { Drop(); }
    Prober(const Prober&) = delete;
    Prober& operator=(const Prober&) = delete;

    FileKind Ask(std::string path)
    {
        if (path.size() >= PATH_MAX || path.find('\0') != path.npos) return FileKind::Missing;
        if (m_socket < 0 && !Start()) return Look(path.data());
        FileKind kind = FileKind::Silent;
        pollfd answer{m_socket, POLLIN, 0};
        if (send(m_socket, path.c_str(), path.size() + 1, MSG_NOSIGNAL) > 0 && PollFor(answer) &&
            recv(m_socket, &kind, sizeof kind, 0) == sizeof kind)
            return kind;
        Drop();
        // The more often nothing is heard, the shorter the wait.
        m_patience = std::max(m_patience / 2, kLeastPatience);
        return FileKind::Silent;
    }

private:
    static constexpr int kPatience = 3000; // milliseconds
    static constexpr int kLeastPatience = 100;

    bool PollFor(pollfd& answer) const
    {
        int ready = 0;
        do {
            ready = poll(&answer, 1, m_patience);
        } while (ready < 0 && errno == EINTR);
        return ready > 0;
    }

    bool Start()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
        m_process = fork();
        if (m_process == 0) Serve(ends[1]);
        close(ends[1]);
        m_socket = ends[0];
        if (m_process < 0) Drop();
        return m_socket >= 0;
    }

    /// Other threads may have held anything when the process was parted: plain system calls alone.
    [[noreturn]] static void Serve(int socket)
    {
        // Nobody is to wait for what else this process would hold open.
        dup2(socket, STDIN_FILENO);
        close_range(STDOUT_FILENO, ~0U, 0);
        char path[PATH_MAX];
        while (recv(STDIN_FILENO, path, sizeof path, 0) > 0) {
            const FileKind kind = Look(path);
            if (send(STDIN_FILENO, &kind, sizeof kind, MSG_NOSIGNAL) != sizeof kind) break;
        }
        _exit(0);
    }

    /// Without waiting for the process, which may be caught for good.
    void Drop()
    {
        if (m_socket >= 0) close(m_socket);
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, WNOHANG);
        }
        m_socket = -1;
        m_process = -1;
    }

    pid_t m_process = -1;
    int m_socket = -1;
    int m_patience = kPatience;
};

Prober& SharedProber()
{
    static Prober prober;
    return prober;
}

} // namespace

FileKind MediaFiles::KindOf(std::u16string_view path)
{
    if (path.empty()) return FileKind::Missing;
    if (const auto known = m_known.find(path); known != m_known.end()) return known->second;
    const std::string name = kv::ToUtf8(path);
    const std::string folder = name.substr(0, name.find_last_of("\\/") + 1);
    const FileKind kind = m_silentFolders.contains(folder) ? FileKind::Silent : SharedProber().Ask(name);
    if (kind == FileKind::Silent) m_silentFolders.insert(folder);
    m_known.emplace(path, kind);
    return kind;
}

std::string MediaFiles::Fault(std::u16string_view path, bool orFolder)
{
    switch (KindOf(path)) {
    case FileKind::File:
        return {};
    case FileKind::Folder:
        return orFolder ? "" : "is a folder";
    case FileKind::Other:
        return "is no regular file";
    case FileKind::Silent:
        return "does not answer";
    default:
        return "is missing";
    }
}

} // namespace kvproject
