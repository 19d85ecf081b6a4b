// The HTTP side of `vexar web`: the page's files, the JSON API and the live
// event streams, on cpp-httplib's thread pool. The DDS thread feeds the hub
// and the apps board; the server only reads them, and sends commands to the
// loggers through its own commander.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "apps_board.hpp"
#include "remote_command.hpp"
#include "web_hub.hpp"

namespace httplib {
class Server;
}

namespace vexar::cli {

struct WebSettings {
    std::string host = "127.0.0.1";
    int port = 8480;  // 0: any free port
    std::string token;
    std::optional<std::string> database;
    std::int32_t domain = 0;
};

class WebServer {
public:
    // Binds the address; throws DdsFailure-like std::runtime_error when it
    // cannot.
    // Without a commander (the domain refused this console the command
    // topics) the controls answer 403 with `noCommander`.
    WebServer(const WebSettings &settings, LiveHub &hub, AppsBoard &apps, RemoteCommander *commander,
              std::string noCommander = {});
    ~WebServer();
    WebServer(const WebServer &) = delete;
    WebServer &operator=(const WebServer &) = delete;

    int port() const { return port_; }
    // Serves on a thread of its own until stop().
    void start();
    void stop();

private:
    void route();

    WebSettings settings_;
    LiveHub &hub_;
    AppsBoard &apps_;
    RemoteCommander *commander_;
    std::string noCommander_;
    std::mutex commandMutex_;  // one command at a time: the commander has one response reader
    std::unique_ptr<httplib::Server> server_;
    int port_ = 0;
    std::thread thread_;
};

}  // namespace vexar::cli
