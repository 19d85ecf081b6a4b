// The C++ face of the logger (C++17 and later), header-only over the C API,
// formatting with fmt:
//
//   vexar::Logger logger(options);            // flushed, then finalized, when it goes
//   logger.info("retry {} of {}", i, n);
//   auto net = logger.category("net");
//   net.warn("link {} down", name);
//   VX_WARN(net, "link {} down", name);      // arguments evaluated only when the level passes
//
// Format strings are checked at compile time: by the member calls from
// C++20 on, by the VX_ macros in C++17 too. The VX_ macros also know their
// source location and, when the settings ask for it, end the text with
// " [@file:line]", which `vexar tail` and `vexar query` show in a column of
// their own. The text is formatted on the caller's thread into a stack
// buffer of the message's bound and cut, like the C calls', at a UTF-8
// character boundary with a visible marker; the location is never cut.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "vexar/FormattedLogging.h"
#include "vexar/Vexar.h"

namespace vexar {

// What a VX_ macro's text ends with.
enum class Location {
    off,       // nothing
    fileName,  // " [@net.cpp:42]"
    path,      // " [@src/net/net.cpp:42]", the file as the compiler was given it
};

// The C++ layer's own settings: the options record is the C API's, fixed.
struct Settings {
    Location location = Location::off;
    // How long the Logger's destructor waits for its last messages to be
    // acknowledged before it finalizes (what is left is counted discarded).
    DDS_Duration_t flushTimeout{5, 0};
};

struct SourceLocation {
    const char *file;
    int line;
};

namespace detail {

constexpr std::size_t kTextSize = QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH + 1;
// A longer path keeps its last characters: where the file's name is.
constexpr std::size_t kLongestLocationFile = 200;
constexpr std::size_t kLocationSize = kLongestLocationFile + 32;

inline const char *locationFile(const char *path, Location location) noexcept {
    const char *file = path;
    if (location == Location::fileName) {
        if (const char *slash = std::strrchr(path, '/')) file = slash + 1;
    }
    std::size_t length = std::strlen(file);
    return length > kLongestLocationFile ? file + (length - kLongestLocationFile) : file;
}

// Writes the text's location ending into `out` (kLocationSize bytes) and
// returns its length; 0 when none is asked for.
inline std::size_t locationEnding(char *out, Location location, const SourceLocation *where) noexcept {
    out[0] = '\0';
    if (location == Location::off || where == nullptr) return 0;
    int length = std::snprintf(out, kLocationSize, "%s%s:%d%s", QTV_VX_VEXAR_LOCATION_OPEN,
                               locationFile(where->file, location), where->line, QTV_VX_VEXAR_LOCATION_CLOSE);
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

// Before C++20 a member call's format is checked only when formatted: a bad
// one is logged as it stands, marked, rather than lost.
inline std::size_t formatFailure(char *text, std::size_t size, fmt::string_view format) noexcept {
    int length = std::snprintf(text, size, "%.*s [format error]", static_cast<int>(format.size()), format.data());
    return QTV_VX_Vexar_endFormattedText(text, size, length > 0 ? static_cast<std::size_t>(length) : 0);
}

// Formats into a stack buffer, ends it with the location and logs it.
template <typename Format, typename... Args>
void logFormatted(QTV_VX_Vexar *self, DDS_Long level, const char *category, Location location,
                  const SourceLocation *where, const Format &format, Args &&...args) noexcept {
    char ending[kLocationSize];
    std::size_t endingLength = locationEnding(ending, location, where);
    char text[kTextSize];
    const std::size_t room = kTextSize - endingLength;
    std::size_t length = 0;
    FMT_TRY {
        auto result = fmt::format_to_n(text, room - 1, format, std::forward<Args>(args)...);
        length = QTV_VX_Vexar_endFormattedText(text, room, result.size);
    }
    FMT_CATCH(...) { length = formatFailure(text, room, fmt::string_view(format)); }
    std::memcpy(text + length, ending, endingLength + 1);
    QTV_VX_Vexar_logMessageWithLevelCategory(self, level, text, category);
}

}  // namespace detail

// A category of the logger: every call logs in it. A handle refers to the
// logger, and its calls are refused once that logger is finalized.
class Category {
public:
    // A handle on a logger that the C API runs (a Logger hands out its own).
    Category(QTV_VX_Vexar *logger, std::string name, Settings settings = {})
        : self_(logger), settings_(settings), name_(std::move(name)) {}

    const std::string &name() const noexcept { return name_; }

    // Whether a call at `level` would do more than be refused; counts it
    // refused when not (as a refused logging call is).
    static bool enabled(DDS_Long level) noexcept { return QTV_VX_Vexar_passesLevelGate(level) != 0; }

    template <typename... Args>
    void log(DDS_Long level, fmt::format_string<Args...> format, Args &&...args) const noexcept {
        if (!enabled(level)) return;
        detail::logFormatted(self_, level, name_.c_str(), Location::off, nullptr, format, std::forward<Args>(args)...);
    }

#define VEXAR_LEVEL_CALL_(name, level)                                             \
    template <typename... Args>                                                    \
    void name(fmt::format_string<Args...> format, Args &&...args) const noexcept { \
        log(level, format, std::forward<Args>(args)...);                           \
    }
    VEXAR_LEVEL_CALL_(fatal, QTV_VX_LOG_LEVEL_FATAL)
    VEXAR_LEVEL_CALL_(severe, QTV_VX_LOG_LEVEL_SEVERE)
    VEXAR_LEVEL_CALL_(error, QTV_VX_LOG_LEVEL_ERROR)
    VEXAR_LEVEL_CALL_(warn, QTV_VX_LOG_LEVEL_WARNING)
    VEXAR_LEVEL_CALL_(notice, QTV_VX_LOG_LEVEL_NOTICE)
    VEXAR_LEVEL_CALL_(info, QTV_VX_LOG_LEVEL_INFO)
    VEXAR_LEVEL_CALL_(debug, QTV_VX_LOG_LEVEL_DEBUG)
    VEXAR_LEVEL_CALL_(trace, QTV_VX_LOG_LEVEL_TRACE)
#undef VEXAR_LEVEL_CALL_

    // The VX_ macros' calls, after their level passed.
    template <typename... Args>
    void logAt(DDS_Long level, SourceLocation where, fmt::format_string<Args...> format,
               Args &&...args) const noexcept {
        detail::logFormatted(self_, level, name_.c_str(), settings_.location, &where, format,
                             std::forward<Args>(args)...);
    }
#if __cplusplus < 202002L
    // Before C++20 a format is checked at compile time only as a compile
    // string; the literal comes again so that the macro needs no empty
    // variable arguments.
    template <typename CompileString, typename... Args>
    void logChecked(DDS_Long level, SourceLocation where, const CompileString &format, std::string_view,
                    Args &&...args) const noexcept {
        detail::logFormatted(self_, level, name_.c_str(), settings_.location, &where, format,
                             std::forward<Args>(args)...);
    }
#endif

protected:
    QTV_VX_Vexar *self_;
    Settings settings_;
    std::string name_;
};

// The process-wide logger, made from options and taken down with the
// object: flushed (within the settings' time-out), then finalized. Its own
// calls log in the empty category.
class Logger : public Category {
public:
    // Copies `options` (null: the defaults) and creates the logger on them.
    // When a logger already runs, or creation fails, a line is printed and
    // this one stays empty: false, its calls refused.
    explicit Logger(const QTV_VX_Options *options = nullptr, Settings settings = {}) noexcept
        : Category(nullptr, std::string(), settings), options_(copyOf(options)) {
        if (options_ == nullptr) return;
        if (QTV_VX_Vexar_setOptions(options_) != 1) {
            QTV_VX_Vexar_printMessage("A logger already runs; this one was not created", "vexar::Logger",
                                      QTV_VX_LOG_LEVEL_ERROR);
        } else {
            self_ = QTV_VX_Vexar_getInstance();
        }
        if (self_ != nullptr) return;
        QTV_VX_Vexar_setOptions(nullptr);  // a failed creation leaves them registered
        options_ = QTV_VX_Options_delete(options_);
    }
    ~Logger() {
        if (self_ != nullptr) {
            // Other failures of the flush print their own line.
            if (QTV_VX_Vexar_flush(self_, &settings_.flushTimeout) == DDS_RETCODE_TIMEOUT) {
                QTV_VX_Vexar_printMessage("Flush timed out: messages still queued are discarded", "vexar::Logger",
                                          QTV_VX_LOG_LEVEL_WARNING);
            }
            QTV_VX_Vexar_finalizeInstance();
        }
        if (options_ != nullptr) QTV_VX_Options_delete(options_);
    }
    Logger(Logger &&other) noexcept
        : Category(std::exchange(other.self_, nullptr), std::string(), other.settings_),
          options_(std::exchange(other.options_, nullptr)) {}
    Logger(const Logger &) = delete;
    Logger &operator=(const Logger &) = delete;
    Logger &operator=(Logger &&) = delete;

    explicit operator bool() const noexcept { return self_ != nullptr; }
    QTV_VX_Vexar *get() const noexcept { return self_; }

    Category category(std::string name) const { return Category(self_, std::move(name), settings_); }

    DDS_ReturnCode_t flush(DDS_Duration_t timeout) const noexcept { return QTV_VX_Vexar_flush(self_, &timeout); }
    bool setFilterLevel(DDS_Long level) const noexcept { return QTV_VX_Vexar_setFilterLevel(self_, level) == 0; }

private:
    // The logger keeps the registered options by pointer: this copy lives as
    // long as it does. The copy leaves the two flags alone, so they are set.
    static QTV_VX_Options *copyOf(const QTV_VX_Options *options) noexcept {
        QTV_VX_Options *copy = QTV_VX_Options_createDefault();
        if (copy == nullptr || options == nullptr) return copy;
        QTV_VX_Options_copy(copy, options);
        QTV_VX_Options_setEchoToStdout(copy, QTV_VX_Options_getEchoToStdout(options));
        QTV_VX_Options_setLogInfrastructureMessages(copy, QTV_VX_Options_getLogInfrastructureMessages(options));
        return copy;
    }

    QTV_VX_Options *options_;
};

}  // namespace vexar

// VX_INFO(loggerOrCategory, "retry {} of {}", i, n): the format is checked
// at compile time; nothing is evaluated or formatted when the level is
// filtered out; the call's file and line end the text when the settings
// ask for it.
#define VEXAR_FIRST_(first, ...) first
#if __cplusplus >= 202002L
#define VEXAR_CHECKED_CALL_(target, level, ...) \
    (target).logAt((level), ::vexar::SourceLocation{__FILE__, __LINE__}, __VA_ARGS__)
#else
#define VEXAR_CHECKED_CALL_(target, level, ...)                               \
    (target).logChecked((level), ::vexar::SourceLocation{__FILE__, __LINE__}, \
                        FMT_STRING(VEXAR_FIRST_(__VA_ARGS__, ~)), __VA_ARGS__)
#endif
#define VX_LOG(target, level, ...)                                                                    \
    do {                                                                                              \
        const DDS_Long vxLevel_ = (level);                                                            \
        if (::vexar::Category::enabled(vxLevel_)) VEXAR_CHECKED_CALL_(target, vxLevel_, __VA_ARGS__); \
    } while (0)
#define VX_FATAL(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_FATAL, __VA_ARGS__)
#define VX_SEVERE(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_SEVERE, __VA_ARGS__)
#define VX_ERROR(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_ERROR, __VA_ARGS__)
#define VX_WARN(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_WARNING, __VA_ARGS__)
#define VX_NOTICE(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_NOTICE, __VA_ARGS__)
#define VX_INFO(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_INFO, __VA_ARGS__)
#define VX_DEBUG(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_DEBUG, __VA_ARGS__)
#define VX_TRACE(target, ...) VX_LOG(target, QTV_VX_LOG_LEVEL_TRACE, __VA_ARGS__)
