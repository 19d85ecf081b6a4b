#include "web_server.hpp"

#include <httplib.h>

#include <nlohmann/json.hpp>

#include "app_label.hpp"
#include "filter_options.hpp"
#include "history_seam.hpp"
#include "names.hpp"
#include "store_schema.hpp"
#include "usage_error.hpp"
#include "web_assets.hpp"
#include "web_json.hpp"

namespace vexar::cli {
namespace {

// Each open page holds a thread for its stream, and a browser keeps a few
// more connections alive.
constexpr std::size_t kHttpThreads = 32;
// A stream waits this long for messages before it looks at the rates again.
constexpr auto kStreamWait = std::chrono::milliseconds(250);
// ...and gathers messages this long between two events, so that a page
// gets batches, not one event per message.
constexpr auto kStreamGather = std::chrono::milliseconds(50);
// The recorder commits at least once a second: see tail --db.
constexpr auto kRecorderCatchUp = std::chrono::milliseconds(1200);
constexpr std::size_t kHistoryEventLines = 1000;
constexpr double kCommandTimeout = 5;
constexpr std::string_view kTokenHeader = "X-Vexar-Token";

const char *kJson = "application/json";

void sendError(httplib::Response &response, int status, const std::string &what) {
    std::string body = "{\"error\":";
    appendJsonString(body, what);
    response.status = status;
    response.set_content(body + "}", kJson);
}

// Browsers send the page's own host; another one means a page of another
// site reached this server by a name that resolves to it.
bool hostAllowed(const httplib::Request &request, const WebSettings &settings, int port) {
    std::string host = request.get_header_value("Host");
    std::string suffix = ":" + std::to_string(port);
    for (const std::string &name :
         {settings.host, std::string("127.0.0.1"), std::string("localhost"), std::string("[::1]")}) {
        if (host == name + suffix) return true;
    }
    return false;
}

// Comparison in time independent of where the texts first differ.
bool sameToken(std::string_view given, std::string_view expected) {
    if (given.size() != expected.size()) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < given.size(); ++i) difference |= static_cast<unsigned char>(given[i] ^ expected[i]);
    return difference == 0;
}

std::string lostEvent(std::uint64_t lost) { return "event: lost\ndata: {\"lost\":" + std::to_string(lost) + "}\n\n"; }

// One page's event stream: first the recorded history when asked (since),
// then the live messages that pass its filter, in batches, with the rates
// once a second and a loss event whenever messages were lost.
class EventStream {
public:
    EventStream(std::shared_ptr<LiveStream> live, const LiveHub &hub, std::optional<StoreQuery> history,
                std::optional<std::string> database)
        : live_(std::move(live)), hub_(hub), history_(std::move(history)), database_(std::move(database)) {}

    bool pump(httplib::DataSink &sink) {
        if (!started_) {
            started_ = true;
            std::string hello = "retry: 2000\n\n";
            if (!sink.write(hello.data(), hello.size())) return false;
            return !history_ || sendHistory(sink);
        }
        StreamTurn turn = live_->next(std::chrono::duration_cast<std::chrono::milliseconds>(kStreamWait));
        if (turn.closed) return false;
        std::string out;
        appendLive(out, turn.lines);
        if (turn.lost > 0) out += lostEvent(turn.lost);
        auto [second, counts] = hub_.lastSecond();
        if (second >= 0 && second != ratesSent_) {
            ratesSent_ = second;
            out += "event: rates\ndata: " + levelCountsJson(counts) + "\n\n";
        }
        if (out.empty()) out = ": idle\n\n";
        if (!sink.write(out.data(), out.size())) return false;
        std::this_thread::sleep_for(kStreamGather);
        return true;
    }

private:
    void appendLive(std::string &out, const std::vector<OwnedLine> &lines) {
        std::size_t start = out.size();
        out += "event: logs\ndata: [";
        bool any = false;
        for (const OwnedLine &owned : lines) {
            LogLine line = owned.view();
            if (seam_.covers(line)) continue;
            if (any) out += ',';
            appendMessageJson(out, json_, line);
            any = true;
        }
        if (any) out += "]\n\n";
        else out.resize(start);
    }

    // As tail --db: the live stream exists already, so history and live
    // overlap instead of leaving a gap, and the seam drops the overlap.
    bool sendHistory(httplib::DataSink &sink) {
        std::this_thread::sleep_for(kRecorderCatchUp);
        std::string out;
        std::size_t inEvent = 0;
        std::int64_t sent = 0;
        std::optional<std::int64_t> first;
        auto flush = [&] {
            if (inEvent > 0) out += "]\n\n";
            inEvent = 0;
            bool written = sink.write(out.data(), out.size());
            out.clear();
            return written;
        };
        bool written = true;
        try {
            LogDatabase db(*database_, Database::Access::ReadOnly);
            selectMessages(db, *history_, [&](const LogLine &line) {
                if (!first) first = line.seconds * 1000000000 + line.nanoseconds;
                out += inEvent == 0 ? "event: history\ndata: [" : ",";
                LogLine marked = line;
                marked.history = true;
                appendMessageJson(out, json_, marked);
                seam_.printed(line);
                ++sent;
                if (++inEvent == kHistoryEventLines) written = written && flush();
            });
        } catch (const std::exception &error) {
            std::string text = "event: problem\ndata: {\"error\":";
            appendJsonString(text, error.what());
            if (inEvent > 0) out += "]\n\n";
            out += text + "}\n\n";
            inEvent = 0;
        }
        bool truncated = sent == *history_->last;
        if (truncated && first) seam_.startsAt(*first);
        if (history_->since) seam_.startsAt(*history_->since);
        written = written && flush();
        std::string end = "event: historyEnd\ndata: {\"count\":" + std::to_string(sent) +
                          ",\"truncated\":" + (truncated ? "true" : "false") + "}\n\n";
        return written && sink.write(end.data(), end.size());
    }

    std::shared_ptr<LiveStream> live_;
    const LiveHub &hub_;
    std::optional<StoreQuery> history_;
    std::optional<std::string> database_;
    HistorySeam seam_;
    LineFormatter json_{LineStyle::Json};
    bool started_ = false;
    std::int64_t ratesSent_ = -1;
};

// The command a control's JSON body asks for; throws UsageError.
FillCommand commandOf(const std::string &kind, const nlohmann::json &body) {
    auto field = [&](const char *name) {
        if (!body.is_object() || !body.contains(name) || !body[name].is_string()) {
            throw UsageError(std::string("expected {\"") + name + "\": \"...\"}");
        }
        return body[name].get<std::string>();
    };
    if (kind == "level") return setLevelCommand(parseNameOrThrow(kLevelNames, field("level")));
    if (kind == "format") return setFormatCommand(parseNameOrThrow(kPrintFormatNames, field("format")));
    std::string pairs[] = {field("category") + "=" + field("verbosity")};
    return setVerbosityCommand(parseCategoryVerbosities(pairs));
}

std::string answerJson(AppId target, const std::optional<CommandAnswer> &answer, const AppRecord &record) {
    std::string out = "{\"id\":\"" + formatAppId(target) + "\",\"label\":";
    appendJsonString(out, appLabel(target, record.kind, record.identity));
    out += ",\"result\":";
    appendJsonString(out, answer ? nameOrNumber(kCommandResultNames, answer->result) : "NO_ANSWER");
    out += ",\"message\":";
    appendJsonString(out, answer ? answer->message : "");
    return out + "}";
}

}  // namespace

WebServer::WebServer(const WebSettings &settings, LiveHub &hub, AppsBoard &apps, RemoteCommander *commander,
                     std::string noCommander)
    : settings_(settings),
      hub_(hub),
      apps_(apps),
      commander_(commander),
      noCommander_(std::move(noCommander)),
      server_(std::make_unique<httplib::Server>()) {
    server_->new_task_queue = [] { return new httplib::ThreadPool(kHttpThreads); };
    port_ = settings.port == 0 ? server_->bind_to_any_port(settings.host)
                               : (server_->bind_to_port(settings.host, settings.port) ? settings.port : -1);
    if (port_ <= 0) {
        throw std::runtime_error("cannot listen on " + settings.host + ":" + std::to_string(settings.port));
    }
    route();
}

WebServer::~WebServer() { stop(); }

void WebServer::start() {
    thread_ = std::thread([this] { server_->listen_after_bind(); });
}

void WebServer::stop() {
    hub_.close();
    server_->stop();
    if (thread_.joinable()) thread_.join();
}

void WebServer::route() {
    using httplib::Request;
    using httplib::Response;
    server_->set_pre_routing_handler([this](const Request &request, Response &response) {
        if (hostAllowed(request, settings_, port_)) return httplib::Server::HandlerResponse::Unhandled;
        sendError(response, 403, "unexpected Host header");
        return httplib::Server::HandlerResponse::Handled;
    });
    server_->set_post_routing_handler([](const Request &, Response &response) {
        // The page needs nothing from elsewhere; nothing else may run in it.
        response.set_header("Content-Security-Policy",
                            "default-src 'self'; img-src 'self' data:; frame-ancestors 'none'; form-action 'none'");
        response.set_header("X-Content-Type-Options", "nosniff");
        response.set_header("Cache-Control", "no-store");
    });
    for (const WebAsset &asset : webAssets()) {
        server_->Get(std::string(asset.path), [&asset](const Request &, Response &response) {
            response.set_content(asset.content.data(), asset.content.size(), std::string(asset.contentType).c_str());
        });
    }
    server_->Get("/api/info", [this](const Request &, Response &response) {
        std::string body = "{\"domain\":" + std::to_string(settings_.domain) + ",\"database\":";
        if (settings_.database) appendJsonString(body, *settings_.database);
        else body += "null";
        response.set_content(body + "}", kJson);
    });
    server_->Get("/api/apps", [this](const Request &, Response &response) {
        response.set_content(apps_.json(AppsBoard::Clock::now()), kJson);
    });
    server_->Get("/api/logs", [this](const Request &request, Response &response) {
        if (!settings_.database) return sendError(response, 404, "no log database: start vexar web with --db PATH");
        std::string body = "{\"messages\":[";
        try {
            StoreQuery query = logsQuery(request.params);
            LogDatabase db(*settings_.database, Database::Access::ReadOnly);
            LineFormatter json(LineStyle::Json);
            bool first = true;
            selectMessages(db, query, [&](const LogLine &line) {
                if (!first) body += ',';
                first = false;
                LogLine marked = line;
                marked.history = true;
                appendMessageJson(body, json, marked);
            });
        } catch (const UsageError &error) {
            return sendError(response, 400, error.what());
        } catch (const std::exception &error) {
            return sendError(response, 500, error.what());
        }
        response.set_content(body + "]}", kJson);
    });
    server_->Get("/api/stream", [this](const Request &request, Response &response) {
        std::optional<StoreQuery> history;
        MessageFilter filter;
        try {
            ParsedArguments arguments = streamArguments(request.params);
            filter = filterFrom(arguments);
            if (arguments.has("since")) {
                if (!settings_.database) throw UsageError("since needs a log database: start vexar web with --db");
                history = storeQueryFrom(arguments);
                history->last = kLogsLimitMost;
            }
        } catch (const UsageError &error) {
            return sendError(response, 400, error.what());
        }
        // Subscribed before the history is read, so that nothing falls between.
        auto stream = std::make_shared<EventStream>(hub_.subscribe(std::move(filter)), hub_, std::move(history),
                                                    settings_.database);
        response.set_chunked_content_provider(
            "text/event-stream", [stream](std::size_t, httplib::DataSink &sink) { return stream->pump(sink); });
    });
    server_->Post(R"(/api/apps/([^/]+)/(level|verbosity|format))", [this](const Request &request, Response &response) {
        std::string token = request.get_header_value(std::string(kTokenHeader).c_str());
        if (token.empty()) return sendError(response, 401, "this control needs the token that vexar web printed");
        if (!sameToken(token, settings_.token)) return sendError(response, 403, "wrong token");
        if (commander_ == nullptr) return sendError(response, 403, noCommander_);
        std::optional<AppId> target = parseAppId(request.matches[1].str());
        if (!target) return sendError(response, 400, "bad application id (expected HOST:APP)");
        std::optional<AppRecord> record = apps_.find(*target);
        if (!record) return sendError(response, 404, "no logger " + formatAppId(*target) + " in this domain");
        FillCommand fill;
        try {
            fill = commandOf(request.matches[2].str(), nlohmann::json::parse(request.body));
        } catch (const UsageError &error) {
            return sendError(response, 400, error.what());
        } catch (const nlohmann::json::exception &) {
            return sendError(response, 400, "the body is not JSON");
        }
        std::optional<CommandAnswer> answer;
        {
            std::lock_guard lock(commandMutex_);
            answer = commander_->send(*target, fill, deadlineAfter(kCommandTimeout));
        }
        response.status = answer ? 200 : 504;
        response.set_content(answerJson(*target, answer, *record), kJson);
    });
    server_->Get(R"(/api/apps/([^/]+)/(level|verbosity|format))", [](const Request &, Response &response) {
        response.set_header("Allow", "POST");
        sendError(response, 405, "controls change a logger: use POST with the token");
    });
    server_->set_error_handler([](const Request &, Response &response) {
        if (response.body.empty()) sendError(response, response.status, response.status == 404 ? "no such page" : "");
    });
}

}  // namespace vexar::cli
