#include "platform/log/log_line_format.hpp"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

namespace vexar::log {
namespace {

struct LevelText {
    std::string_view name;
    std::string_view code;
};

// Indexed by level - 1 and by category number.
constexpr std::array<LevelText, 5> kLevelTexts{{
    {"ERROR", "E"},
    {"WARNING", "W"},
    {"STATUS_LOCAL", "L"},
    {"STATUS_REMOTE", "R"},
    {"DEBUG", "D"},
}};
constexpr std::array<std::string_view, OBLX_CONFIG_LOG_CATEGORY_COUNT> kCategoryNames{"PLATFORM", "COMMUNICATION",
                                                                                      "DATABASE", "ENTITIES", "API"};

const LevelText &levelText(OBLX_Config_LogLevel level) noexcept {
    static constexpr LevelText kUnknown{"LEVEL?", "?"};
    const auto index = static_cast<size_t>(level) - 1;
    return index < kLevelTexts.size() ? kLevelTexts[index] : kUnknown;
}

bool has(uint32_t printFormat, uint32_t bit) noexcept { return (printFormat & bit) != 0; }

bool known(const char *text) noexcept { return text != nullptr && text[0] != '\0'; }

std::string timestampText(const timespec &time) {
    tm local{};
    localtime_r(&time.tv_sec, &local);
    char text[48];
    const size_t length = strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    snprintf(text + length, sizeof text - length, ".%06ld", time.tv_nsec / 1000);
    return text;
}

// Cyclone passes __FILE__, a build-tree path; the file name is what helps.
std::string_view baseName(const char *path) noexcept {
    const char *slash = strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

// Every line ends with exactly one newline, whether or not its text had one.
std::string_view withoutFinalNewlines(std::string_view text) noexcept {
    while (!text.empty() && text.back() == '\n') text.remove_suffix(1);
    return text;
}

// Fields separated by single spaces.
class FieldList {
public:
    explicit FieldList(std::string &line) : line_(line) {}
    void add(std::string_view field) {
        if (!line_.empty()) line_ += ' ';
        line_ += field;
    }

private:
    std::string &line_;
};

// Read once per thread: glibc reads a thread's name from /proc. Threads name
// themselves before they run their entry, so the first read sees the name.
const char *currentThreadName() noexcept {
    thread_local char name[16] = "";
    if (name[0] == '\0' && (pthread_getname_np(pthread_self(), name, sizeof name) != 0 || name[0] == '\0'))
        snprintf(name, sizeof name, "%ld", static_cast<long>(gettid()));
    return name;
}

}  // namespace

LineStamp LineStamp::now() noexcept {
    LineStamp stamp{};
    clock_gettime(CLOCK_REALTIME, &stamp.wallClock);
    stamp.process = static_cast<long>(getpid());
    snprintf(stamp.thread, sizeof stamp.thread, "%s", currentThreadName());
    return stamp;
}

std::string_view levelName(OBLX_Config_LogLevel level) noexcept { return levelText(level).name; }

std::string_view categoryName(OBLX_Config_LogCategory category) noexcept {
    const auto index = static_cast<size_t>(category);
    return index < kCategoryNames.size() ? kCategoryNames[index] : "CATEGORY?";
}

std::string formatLogLine(const LogRecord &record, uint32_t printFormat, const LineStamp &stamp) {
    std::string line;
    FieldList fields(line);
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_TIMESTAMP)) fields.add(timestampText(stamp.wallClock));
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_PROCESS)) fields.add("[pid " + std::to_string(stamp.process) + "]");
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_THREAD)) fields.add(std::string("[thread ") + stamp.thread + "]");
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_DOMAIN) && record.domain != kNoDomain)
        fields.add("[domain " + std::to_string(record.domain) + "]");
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_LEVEL)) fields.add(levelText(record.level).name);
    else if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_LEVEL_CODE)) fields.add(levelText(record.level).code);
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_CATEGORY)) fields.add(categoryName(record.category));
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_SOURCE) && known(record.source))
        fields.add(std::string("(") + record.source + ")");
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_FUNCTION) && known(record.function)) fields.add(record.function);
    if (has(printFormat, OBLX_CONFIG_LOG_PRINT_BIT_LOCATION) && known(record.file))
        fields.add(std::string(baseName(record.file)) + ":" + std::to_string(record.line));
    if (!line.empty()) line += ": ";
    line += withoutFinalNewlines(record.text);
    line += '\n';
    return line;
}

}  // namespace vexar::log
