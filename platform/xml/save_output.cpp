// Output of a save context, into its FILE or its growing string.
#include "platform/xml/save_output.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/log/report.h"

namespace vexar::xml {
namespace {

constexpr std::size_t kFirstCapacity = 256;

// Room for `needed` bytes in the context's string.
bool reserve(DDS_XMLSaveContext &context, std::size_t needed) noexcept {
    if (needed <= context.capacity) return true;
    const std::size_t capacity = std::max({needed, context.capacity * 2, kFirstCapacity});
    auto *grown = static_cast<char *>(std::realloc(context.buffer, capacity));
    if (grown == nullptr) {
        OBLX_Report_allocationFailure("DDS_XMLSaveContext", capacity);
        return false;
    }
    context.buffer = grown;
    context.capacity = capacity;
    return true;
}

std::string_view replacement(char c, Escape escape) noexcept {
    const bool attribute = escape == Escape::attribute;
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '\r':
        return "&#13;";  // a parser would turn it into a line break
    case '\n':
        return attribute ? "&#10;" : "";
    case '\t':
        return attribute ? "&#9;" : "";
    default:
        return "";
    }
}

}  // namespace

void write(DDS_XMLSaveContext &context, std::string_view text) noexcept {
    if (context.error != 0 || text.empty()) return;
    if (context.file != nullptr) {
        if (std::fwrite(text.data(), 1, text.size(), context.file) != text.size()) context.error = 1;
        return;
    }
    if (!reserve(context, context.length + text.size() + 1)) {
        context.error = 1;
        return;
    }
    std::memcpy(context.buffer + context.length, text.data(), text.size());
    context.length += text.size();
    context.buffer[context.length] = '\0';
}

void writeEscaped(DDS_XMLSaveContext &context, std::string_view text, Escape escape) noexcept {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view escaped = replacement(text[i], escape);
        if (escaped.empty()) continue;
        write(context, text.substr(start, i - start));
        write(context, escaped);
        start = i + 1;
    }
    write(context, text.substr(start));
}

void writeIndent(DDS_XMLSaveContext &context) noexcept {
    static constexpr std::string_view kSpaces = "                                ";
    long long remaining = static_cast<long long>(std::max(context.depth, 0)) * std::max(context.indent, 0);
    while (remaining > 0) {
        const auto chunk = static_cast<std::size_t>(std::min<long long>(remaining, kSpaces.size()));
        write(context, kSpaces.substr(0, chunk));
        remaining -= static_cast<long long>(chunk);
    }
}

}  // namespace vexar::xml
