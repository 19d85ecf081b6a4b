// One walk over the type code, writing through one of two layouts.
#include "platform/types/sample_printer.hpp"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace vexar::types::sample {
namespace {

template <typename T>
T readAs(const unsigned char *where) noexcept {
    T value;
    std::memcpy(&value, where, sizeof value);
    return value;
}

DDS_TCKind kindOf(const DDS_TypeCode &type) noexcept { return DDS_TypeCode_kind(&type); }

bool isComposite(const DDS_TypeCode &type) noexcept {
    DDS_TCKind kind = kindOf(type);
    return kind == DDS_TK_STRUCT || kind == DDS_TK_UNION;
}

std::string enumeratorName(const DDS_TypeCode &type, DDS_Long value) {
    for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
        if (type.members[i].label == value) return type.members[i].name;
    }
    return std::to_string(value);
}

std::string floatText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

// The text of a value that is neither composite, array nor sequence.
std::string scalarText(const DDS_TypeCode &type, const unsigned char *value) {
    switch (kindOf(type)) {
    case DDS_TK_SHORT:
        return std::to_string(readAs<std::int16_t>(value));
    case DDS_TK_USHORT:
        return std::to_string(readAs<std::uint16_t>(value));
    case DDS_TK_LONG:
        return std::to_string(readAs<std::int32_t>(value));
    case DDS_TK_ULONG:
        return std::to_string(readAs<std::uint32_t>(value));
    case DDS_TK_LONGLONG:
        return std::to_string(readAs<std::int64_t>(value));
    case DDS_TK_ULONGLONG:
        return std::to_string(readAs<std::uint64_t>(value));
    case DDS_TK_OCTET:
        return std::to_string(*value);
    case DDS_TK_BOOLEAN:
        return *value != 0 ? "true" : "false";
    case DDS_TK_CHAR:
        return std::string("'") + static_cast<char>(*value) + "'";
    case DDS_TK_FLOAT:
        return floatText(readAs<float>(value));
    case DDS_TK_DOUBLE:
        return floatText(readAs<double>(value));
    case DDS_TK_ENUM:
        return enumeratorName(type, readAs<DDS_Long>(value));
    case DDS_TK_STRING: {
        const char *text = readAs<const char *>(value);
        return text == nullptr ? "NULL" : std::string("\"") + text + "\"";
    }
    default:
        return "?";
    }
}

// Where the walk's output goes: named scalars, and named nested values
// opened and closed around their members.
class Layout {
public:
    Layout(PrintLayout layout, unsigned indent, std::string &out) : layout_(layout), depth_(indent), out_(out) {}

    void scalar(const std::string &name, const std::string &text) {
        if (layout_ == PrintLayout::lines) {
            indent();
            out_ += name + ": " + text + "\n";
        } else {
            separate();
            out_ += name + "=" + text;
        }
    }

    // An unnamed value opens nothing on its own line.
    void open(const std::string &name) {
        if (layout_ == PrintLayout::lines) {
            if (!name.empty()) {
                indent();
                out_ += name + ":\n";
                ++depth_;
            }
        } else {
            separate();
            out_ += name.empty() ? "{" : name + "={";
            firstAtLevel_.push_back(true);
        }
    }

    void close(const std::string &name) {
        if (layout_ == PrintLayout::lines) {
            if (!name.empty()) --depth_;
        } else {
            out_ += "}";
            firstAtLevel_.pop_back();
        }
    }

private:
    void indent() { out_.append(3 * static_cast<size_t>(depth_), ' '); }

    void separate() {
        if (firstAtLevel_.empty()) return;
        if (!firstAtLevel_.back()) out_ += ", ";
        firstAtLevel_.back() = false;
    }

    PrintLayout layout_;
    unsigned depth_;
    std::vector<bool> firstAtLevel_;
    std::string &out_;
};

class Printer {
public:
    explicit Printer(Layout &layout) : layout_(layout) {}

    void value(const std::string &name, const DDS_TypeCode &type, const unsigned char *sample) {
        if (isComposite(type)) {
            layout_.open(name);
            members(type, sample);
            layout_.close(name);
        } else if (kindOf(type) == DDS_TK_ARRAY) {
            elements(name, *type.content_type, sample, type.dimension);
        } else if (kindOf(type) == DDS_TK_SEQUENCE) {
            sequence(name, type, sample);
        } else {
            layout_.scalar(name, scalarText(type, sample));
        }
    }

private:
    void members(const DDS_TypeCode &type, const unsigned char *sample) {
        if (kindOf(type) == DDS_TK_UNION) {
            DDS_Long discriminator = readAs<DDS_Long>(sample);
            layout_.scalar("_d", scalarText(*type.discriminator_type, sample));
            DDS_Long index = DDS_TypeCode_find_member_by_label(&type, discriminator);
            if (index >= 0) branch(type.members[index], sample);
            return;
        }
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) branch(type.members[i], sample);
    }

    void branch(const DDS_TypeCodeMember &member, const unsigned char *sample) {
        value(member.name, *member.type, sample + member.offset);
    }

    void elements(const std::string &name, const DDS_TypeCode &element, const unsigned char *first,
                  DDS_UnsignedLong count) {
        for (DDS_UnsignedLong i = 0; i < count; ++i) {
            value(name + "[" + std::to_string(i) + "]", element, first + i * element.sample_size);
        }
    }

    // Sequence operations take a mutable record; printing changes nothing.
    void sequence(const std::string &name, const DDS_TypeCode &type, const unsigned char *sample) {
        void *seq = const_cast<unsigned char *>(sample);
        const DDS_TypeCodeSequenceOps &ops = *type.sequence_ops;
        DDS_Long length = ops.get_length(seq);
        if (length <= 0) {
            layout_.scalar(name, "[]");
            return;
        }
        for (DDS_Long i = 0; i < length; ++i) {
            value(name + "[" + std::to_string(i) + "]", *type.content_type,
                  static_cast<const unsigned char *>(ops.get_reference(seq, i)));
        }
    }

    Layout &layout_;
};

}  // namespace

std::string print(const DDS_TypeCode &type, const void *sample, PrintLayout layout, const char *description,
                  unsigned indent) noexcept {
    try {
        std::string out;
        Layout to(layout, indent, out);
        std::string name = description != nullptr ? description : "";
        // Only a composite value may go unnamed: its members carry the names.
        if (name.empty() && (sample == nullptr || !isComposite(type))) {
            name = DDS_TypeCode_name(&type) != nullptr ? DDS_TypeCode_name(&type) : "value";
        }
        if (sample == nullptr) {
            to.scalar(name, "NULL");
        } else {
            Printer(to).value(name, type, static_cast<const unsigned char *>(sample));
        }
        return out;
    } catch (...) {
        return {};
    }
}

}  // namespace vexar::types::sample
