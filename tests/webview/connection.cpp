#include "view.h"

#include <cstdlib>

#ifdef _WIN32
#include <winsock2.h>
// winsock2.h comes first.
#include <windows.h>
using Socket = SOCKET;
#else
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
using Socket = int;
constexpr Socket INVALID_SOCKET = -1;
#endif

namespace {

Socket SocketOf(View* view) {
    return static_cast<Socket>(view->socket);
}

bool WouldBlock() {
#ifdef _WIN32
    return WSAGetLastError() == WSAEWOULDBLOCK;
#else
    return errno == EAGAIN || errno == EINTR;
#endif
}

void WaitUntilWritable(Socket socket) {
#ifdef _WIN32
    fd_set writable;
    FD_ZERO(&writable);
    FD_SET(socket, &writable);
    select(0, nullptr, &writable, nullptr, nullptr);
#else
    pollfd entry = {socket, POLLOUT, 0};
    poll(&entry, 1, -1);
#endif
}

void CloseSocket(Socket socket) {
#ifdef _WIN32
    closesocket(socket);
#else
    close(socket);
#endif
}

}  // namespace

bool ConnectToHarness(View* view) {
    const char* port = std::getenv("VARNELLE_TEST_WEBVIEW_PORT");
    if (!port) {
        return false;
    }
#ifdef _WIN32
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) {
        return false;
    }
#endif
    const Socket connection = socket(AF_INET, SOCK_STREAM, 0);
    if (connection == INVALID_SOCKET) {
        return false;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::atoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        CloseSocket(connection);
        return false;
    }
    // Calls and answers are small and follow each other: waiting to fill a packet would cost 40 ms a call.
    const int noDelay = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
#ifndef _WIN32
    fcntl(connection, F_SETFL, O_NONBLOCK);
    fcntl(connection, F_SETFD, FD_CLOEXEC);
#endif
    view->socket = static_cast<uintptr_t>(connection);
    return true;
}

void Disconnect(View* view) {
    CloseSocket(SocketOf(view));
}

void SendMessageLine(View* view, const std::string& json) {
    const std::string line = json + "\n";
    std::lock_guard<std::mutex> lock(view->sendMutex);
    size_t sent = 0;
    while (sent < line.size()) {
#ifdef _WIN32
        const int flags = 0;
#else
        const int flags = MSG_NOSIGNAL;
#endif
        const auto count =
            send(SocketOf(view), line.data() + sent, static_cast<int>(line.size() - sent), flags);
        if (count >= 0) {
            sent += static_cast<size_t>(count);
        } else if (WouldBlock()) {
            WaitUntilWritable(SocketOf(view));
        } else {
            return;
        }
    }
}

std::string JsonString(std::string_view text) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            out += '\\';
            out += character;
        } else if (code < 0x20) {
            out += "\\u00";
            out += kDigits[code >> 4];
            out += kDigits[code & 15];
        } else {
            out += character;
        }
    }
    return out + "\"";
}

void ReadFromHarness(View* view) {
    char buffer[65536];
    for (;;) {
        const auto count = recv(SocketOf(view), buffer, sizeof buffer, 0);
        if (count <= 0) {
            break;
        }
        view->received.append(buffer, static_cast<size_t>(count));
    }
    for (size_t end = view->received.find('\n'); end != std::string::npos; end = view->received.find('\n')) {
        const std::string line = view->received.substr(0, end);
        view->received.erase(0, end + 1);
        const size_t idAt = line.find('\t') + 1;
        const size_t nameAt = line.find('\t', idAt) + 1;
        const size_t requestAt = line.find('\t', nameAt) + 1;
        if (line.compare(0, 5, "call\t") != 0 || nameAt == 0 || requestAt == 0) {
            continue;
        }
        const std::string id = line.substr(idAt, nameAt - idAt - 1);
        const auto binding = view->bindings.find(line.substr(nameAt, requestAt - nameAt - 1));
        if (binding != view->bindings.end()) {
            binding->second.function(id.c_str(), line.c_str() + requestAt, binding->second.context);
        }
    }
}

void RunDispatched(View* view) {
    // What is dispatched from now on has its own turn.
    std::deque<View::Work> work;
    {
        std::lock_guard<std::mutex> lock(view->mutex);
        work.swap(view->work);
    }
    for (const View::Work& step : work) {
        step.function(view, step.context);
    }
}
