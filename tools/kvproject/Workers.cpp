#include "Workers.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <list>
#include <map>
#include <optional>
#include <poll.h>
#include <sched.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kvproject {
namespace {

/// What was done for a file.
struct Outcome {
    std::string out;
    std::string message;
    int code = 0;
};

/// In front of an outcome on its way from a worker.
struct Header {
    std::size_t out = 0;
    std::size_t message = 0;
    int code = 0;
};

std::size_t Processors()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    const int count = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
    return static_cast<std::size_t>(std::max(count, 1));
}

/// False when the other side is gone.
bool SendAll(int socket, const void* data, std::size_t size)
{
    const char* from = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t sent = send(socket, from, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        from += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool ReceiveAll(int socket, void* data, std::size_t size)
{
    ssize_t got = 0;
    do {
        got = recv(socket, data, size, MSG_WAITALL);
    } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(size);
}

Outcome Try(const FileWork& work, const std::string& file)
{
    Outcome outcome;
    std::ostringstream out;
    try {
        outcome.code = work(file, out);
    } catch (const std::exception& error) {
        outcome.code = kFault;
        outcome.message = error.what();
    }
    outcome.out = std::move(out).str();
    return outcome;
}

/// A process that works on one file after the other, and this process's end of the way to it.
class Worker {
public:
    Worker(const std::vector<std::string>& files, const FileWork& work, const std::list<Worker>& others)
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) Fail();
        // What is still to be printed is this process's.
        std::cout.flush();
        m_process = fork();
        if (m_process < 0) {
            close(ends[0]);
            close(ends[1]);
            Fail();
        }
        if (m_process == 0) {
            // Each worker learns that this process is gone.
            close(ends[0]);
            for (const Worker& other : others)
                close(other.m_socket);
            Serve(ends[1], files, work);
        }
        close(ends[1]);
        m_socket = ends[0];
    }
    ~Worker()
    {
        close(m_socket);
        waitpid(m_process, nullptr, 0);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    int Socket() const { return m_socket; }
    /// The number of the file that it works on.
    const std::optional<std::size_t>& File() const { return m_file; }

    void Begin(std::size_t file)
    {
        m_file = file;
        m_received.clear();
        // That it is gone is found out when it does not answer.
        SendAll(m_socket, &file, sizeof file);
    }

    /// Takes what has arrived; false when the worker is gone.
    bool Receive()
    {
        char buffer[1 << 16];
        const ssize_t got = recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT);
        if (got > 0) m_received.append(buffer, static_cast<std::size_t>(got));
        return got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR));
    }

    /// The outcome, once all of it is there.
    std::optional<Outcome> End()
    {
        Header header;
        if (m_received.size() < sizeof header) return std::nullopt;
        std::memcpy(&header, m_received.data(), sizeof header);
        if (m_received.size() < sizeof header + header.out + header.message) return std::nullopt;
        m_file.reset();
        return Outcome{m_received.substr(sizeof header, header.out), m_received.substr(sizeof header + header.out),
                       header.code};
    }

    /// How a worker went that answers no more.
    std::string Death() const
    {
        siginfo_t how{};
        const bool known = waitid(P_PID, static_cast<id_t>(m_process), &how, WEXITED | WNOWAIT) == 0;
        if (known && (how.si_code == CLD_KILLED || how.si_code == CLD_DUMPED))
            return "the program was ended by signal " + std::to_string(how.si_status);
        return "the program ended early";
    }

private:
    [[noreturn]] static void Fail() { throw Failure(std::string("cannot start a process: ") + std::strerror(errno)); }

    [[noreturn]] static void Serve(int socket, const std::vector<std::string>& files, const FileWork& work) noexcept
    {
        std::size_t file = 0;
        while (ReceiveAll(socket, &file, sizeof file)) {
            const Outcome outcome = Try(work, files[file]);
            const Header header{outcome.out.size(), outcome.message.size(), outcome.code};
            if (!SendAll(socket, &header, sizeof header) || !SendAll(socket, outcome.out.data(), outcome.out.size()) ||
                !SendAll(socket, outcome.message.data(), outcome.message.size()))
                break;
        }
        // What the process shares with the first one is the first one's to end.
        _exit(0);
    }

    pid_t m_process = -1;
    int m_socket = -1;
    std::optional<std::size_t> m_file;
    std::string m_received;
};

class Run {
public:
    Run(const std::vector<std::string>& files, const FileWork& work) : m_files(files), m_work(work) {}

    int All()
    {
        const std::size_t count = std::min(Processors(), m_files.size());
        while (m_workers.size() < count)
            m_workers.emplace_back(m_files, m_work, m_workers);
        while (m_printed < m_files.size()) {
            for (Worker& worker : m_workers) {
                // What is done early is kept until its turn, within bounds.
                if (!worker.File() && m_begun < std::min(m_files.size(), m_printed + kAhead * count))
                    worker.Begin(m_begun++);
            }
            Wait();
            Print();
        }
        return m_code;
    }

private:
    static constexpr std::size_t kAhead = 8;

    void Wait()
    {
        std::vector<pollfd> waits;
        for (const Worker& worker : m_workers)
            waits.push_back({worker.File() ? worker.Socket() : -1, POLLIN, 0});
        if (poll(waits.data(), waits.size(), -1) < 0) return;
        auto next = m_workers.begin();
        for (const pollfd& wait : waits) {
            const auto worker = next++;
            if (wait.revents != 0) Take(worker);
        }
    }

    void Take(std::list<Worker>::iterator worker)
    {
        const std::size_t file = *worker->File();
        const bool alive = worker->Receive();
        if (auto outcome = worker->End()) {
            m_done.emplace(file, std::move(*outcome));
        } else if (!alive) {
            // Another one takes its place, behind the others.
            m_done.emplace(file, Outcome{"", m_files[file] + ": " + worker->Death(), kFault});
            m_workers.erase(worker);
            m_workers.emplace_back(m_files, m_work, m_workers);
        }
    }

    void Print()
    {
        for (auto next = m_done.find(m_printed); next != m_done.end(); next = m_done.find(++m_printed)) {
            const Outcome& outcome = next->second;
            std::cout << outcome.out << std::flush;
            if (!outcome.message.empty()) TellFailure(outcome.message);
            m_code = std::max(m_code, outcome.code);
            m_done.erase(next);
        }
    }

    const std::vector<std::string>& m_files;
    const FileWork& m_work;
    std::list<Worker> m_workers;
    std::map<std::size_t, Outcome> m_done;
    std::size_t m_begun = 0;
    std::size_t m_printed = 0;
    int m_code = 0;
};

} // namespace

int ForEachFile(const std::vector<std::string>& files, const FileWork& work)
{
    return files.size() == 1 ? work(files.front(), std::cout) : Run(files, work).All();
}

} // namespace kvproject
