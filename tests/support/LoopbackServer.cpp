#include "support/LoopbackServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace orbisk::test {

namespace {

constexpr int queueLength = 64;
constexpr int forever = -1;
/// One more than a queue of length 0 holds, and some.
constexpr int fillingConnections = 4;

sockaddr_in loopback(unsigned short port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A socket that listens at a port of the system's choice.
int listenAnywhere(int queue, unsigned short& port) {
    const int result = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof(address);
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (result < 0 || bind(result, general, length) != 0 || listen(result, queue) != 0 ||
        getsockname(result, general, &length) != 0)
        throw std::runtime_error("cannot listen");
    port = ntohs(address.sin_port);
    return result;
}

/// A socket on its way to this port of the machine.
int beginConnecting(unsigned short port) {
    const int result = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    connect(result, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    return result;
}

} // namespace

LoopbackServer::Connection::Connection(int socket, int stop) : m_socket(socket), m_stop(stop) {}

bool LoopbackServer::Connection::isReadable(int milliseconds) const {
    pollfd watched[] = {{m_socket, POLLIN, 0}, {m_stop, POLLIN, 0}};
    poll(watched, 2, milliseconds);
    return watched[0].revents != 0 && watched[1].revents == 0;
}

std::string LoopbackServer::Connection::request() const {
    std::string text;
    char byte = 0;
    while (text.find("\r\n\r\n") == std::string::npos && isReadable(forever) &&
           read(m_socket, &byte, 1) == 1)
        text += byte;
    return text;
}

void LoopbackServer::Connection::send(const std::string& bytes) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

bool LoopbackServer::Connection::wait(double seconds) const {
    pollfd watched[] = {{m_socket, POLLRDHUP, 0}, {m_stop, POLLIN, 0}};
    return poll(watched, 2, static_cast<int>(seconds * 1000)) == 0;
}

void LoopbackServer::Connection::waitForClose() const {
    char byte = 0;
    while (isReadable(forever) && read(m_socket, &byte, 1) == 1) {
    }
}

LoopbackServer::LoopbackServer(Answer answer)
    : m_answer(std::move(answer)), m_listening(listenAnywhere(queueLength, m_port)),
      m_stop(eventfd(0, EFD_CLOEXEC)), m_thread([this] { serve(); }) {}

LoopbackServer::~LoopbackServer() {
    const std::uint64_t one = 1;
    if (write(m_stop, &one, sizeof(one)) == sizeof(one))
        m_thread.join();
    close(m_listening);
    close(m_stop);
}

void LoopbackServer::serve() {
    for (;;) {
        pollfd watched[] = {{m_listening, POLLIN, 0}, {m_stop, POLLIN, 0}};
        poll(watched, 2, forever);
        if (watched[1].revents != 0)
            return;
        const int socket = accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        ++m_connections;
        Connection connection(socket, m_stop);
        m_answer(connection);
        close(socket);
    }
}

FullPort::FullPort() : m_sockets{listenAnywhere(0, m_port)} {
    for (int i = 0; i < fillingConnections; ++i)
        m_sockets.push_back(beginConnecting(m_port));
}

bool FullPort::answers() const {
    constexpr int momentMilliseconds = 300;
    pollfd watched{beginConnecting(m_port), POLLOUT, 0};
    const bool connected = poll(&watched, 1, momentMilliseconds) != 0;
    close(watched.fd);
    return connected;
}

FullPort::~FullPort() {
    for (const int socket : m_sockets)
        close(socket);
}

std::string httpAnswer(int status, const std::string& headers, const std::string& body) {
    return "HTTP/1.0 " + std::to_string(status) + " Status\r\n" + headers + "\r\n" + body;
}

std::string httpAnswer(const std::string& body) {
    return httpAnswer(200, "Content-Length: " + std::to_string(body.size()) + "\r\n", body);
}

} // namespace orbisk::test
