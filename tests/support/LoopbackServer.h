#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace orbisk::test {

/// A server on this machine, with a thread of its own that answers one connection after the other.
class LoopbackServer {
public:
    /// One connection, as its answer sees it. Whatever waits ends when the server does.
    class Connection {
    public:
        Connection(int socket, int stop);

        /// What was asked: all up to the first empty line.
        std::string request() const;

        /// Sends these bytes, as far as the other side takes them.
        void send(const std::string& bytes) const;

        /// Waits, at most this long. @return whether the server goes on and the other side is
        /// there.
        bool wait(double seconds) const;

        /// Waits until the other side has closed, or the server ends.
        void waitForClose() const;

    private:
        bool isReadable(int milliseconds) const;

        int m_socket;
        int m_stop;
    };

    using Answer = std::function<void(Connection&)>;

    /// A connection is closed when its `answer` returns.
    explicit LoopbackServer(Answer answer);
    ~LoopbackServer();

    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    unsigned short port() const { return m_port; }

    /// Number of connections so far.
    int connectionCount() const { return m_connections; }

private:
    void serve();

    Answer m_answer;
    unsigned short m_port = 0;
    int m_listening = -1;
    int m_stop = -1;
    std::atomic<int> m_connections{0};
    std::thread m_thread;
};

/// A port of this machine to which connecting takes forever: its queue is full and stays so.
class FullPort {
public:
    FullPort();
    ~FullPort();

    FullPort(const FullPort&) = delete;
    FullPort& operator=(const FullPort&) = delete;

    unsigned short port() const { return m_port; }

    /// Whether a connection comes about nevertheless, within a moment.
    bool answers() const;

private:
    unsigned short m_port = 0;
    std::vector<int> m_sockets;
};

/// An HTTP answer with this status line's number, these header lines (each with its end) and body.
std::string httpAnswer(int status, const std::string& headers, const std::string& body);

/// A successful one that tells its length.
std::string httpAnswer(const std::string& body);

} // namespace orbisk::test
