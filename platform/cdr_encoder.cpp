// Writing a sample, and measuring what writing it would take: one encoder
// over two sinks, so that the size always matches the bytes.
#include <cstring>

#include "platform/cdr_stream.hpp"
#include "platform/cdr_walker.hpp"

namespace vexar::cdr {
namespace {

// Writes into a CDR stream.
class StreamSink {
public:
    explicit StreamSink(OBLX_CdrStream &stream) noexcept : stream_(stream) {}

    bool primitive(const void *value, DDS_UnsignedLong size) noexcept { return writePrimitive(stream_, value, size); }
    bool count(DDS_UnsignedLong count) noexcept { return write32(stream_, count); }
    bool string(const char *value, DDS_UnsignedLong maximumLength) noexcept {
        return writeString(stream_, value, maximumLength);
    }
    bool beginParameter(OBLX_CdrParameterHeader &header, DDS_UnsignedLong id, bool extended) noexcept {
        return writeParameterHeader(stream_, header, id, extended, false);
    }
    bool endParameter(const OBLX_CdrParameterHeader &header) noexcept {
        return finishParameterHeader(stream_, header);
    }
    bool listEnd() noexcept { return writeListEnd(stream_); }

    // Starts a parameter list: an outermost list (the stream not yet
    // started) always ends with a sentinel; a nested one keeps the
    // caller's skip-list-end mark, cleared while its members are written.
    bool enterList() noexcept {
        bool skipEnd = stream_.dirty && stream_.skipListEnd;
        stream_.dirty = DDS_BOOLEAN_TRUE;
        stream_.skipListEnd = DDS_BOOLEAN_FALSE;
        return skipEnd;
    }
    void leaveList(bool skipEnd) noexcept { stream_.skipListEnd = skipEnd ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE; }

private:
    OBLX_CdrStream &stream_;
};

// Counts the bytes the stream sink would write, alignment counted from 0.
class MeasuringSink {
public:
    explicit MeasuringSink(std::uint64_t start) noexcept : position_(start) {}

    std::uint64_t position() const noexcept { return position_; }

    bool primitive(const void *, DDS_UnsignedLong size) noexcept {
        advance(size, size);
        return true;
    }
    bool count(DDS_UnsignedLong) noexcept {
        advance(4, 4);
        return true;
    }
    bool string(const char *value, DDS_UnsignedLong maximumLength) noexcept {
        if (value == nullptr) return false;
        size_t characters = strnlen(value, maximumLength);
        if (characters >= maximumLength) return false;
        advance(4, 4 + characters + 1);
        return true;
    }
    bool beginParameter(OBLX_CdrParameterHeader &header, DDS_UnsignedLong, bool extended) noexcept {
        advance(4, extended ? OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE : OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE);
        header.extended = extended;
        header.valueStart = static_cast<DDS_UnsignedLong>(position_);
        return true;
    }
    bool endParameter(const OBLX_CdrParameterHeader &header) noexcept {
        // Member lengths are differences of positions: exact modulo 2^32.
        auto length = static_cast<DDS_UnsignedLong>(position_) - header.valueStart;
        return header.extended || length <= OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH;
    }
    bool listEnd() noexcept {
        advance(4, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE);
        return true;
    }
    bool enterList() noexcept { return false; }
    void leaveList(bool) noexcept {}

private:
    void advance(std::uint64_t alignment, std::uint64_t size) noexcept {
        position_ = (position_ + alignment - 1) / alignment * alignment + size;
    }

    std::uint64_t position_;
};

template <typename Sink>
class Encoder {
public:
    Encoder(Sink &sink, const Encoding &encoding) noexcept : sink_(sink), encoding_(encoding) {}

    bool value(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        if (DDS_UnsignedLong size = primitiveSize(type)) return sink_.primitive(sample, size);
        switch (kindOf(type)) {
        case DDS_TK_STRING:
            return sink_.string(*reinterpret_cast<const char *const *>(sample), type.length + 1);
        case DDS_TK_ARRAY:
            return array(type, sample);
        case DDS_TK_SEQUENCE:
            return sequence(type, sample);
        case DDS_TK_STRUCT:
            return isMutable(type) ? structList(type, sample) : structPlain(type, sample);
        case DDS_TK_UNION:
            return isMutable(type) ? unionList(type, sample) : unionPlain(type, sample);
        default:
            return false;
        }
    }

private:
    bool inForm(const DDS_TypeCode &type, DDS_UnsignedLong index) const noexcept {
        return !encoding_.keyForm || isKeyFormMember(type, index);
    }

    bool array(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        const DDS_TypeCode &element = *type.content_type;
        for (DDS_UnsignedLong i = 0; i < type.dimension; ++i) {
            if (!value(element, sample + i * element.sample_size)) return false;
        }
        return true;
    }

    bool sequence(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        const DDS_TypeCodeSequenceOps &ops = *type.sequence_ops;
        // The sequence operations take a mutable record: a zero-filled one is initialized on first use.
        void *seq = const_cast<unsigned char *>(sample);
        DDS_Long length = ops.get_length(seq);
        if (length < 0 || static_cast<DDS_UnsignedLong>(length) > type.length) return false;
        if (!sink_.count(static_cast<DDS_UnsignedLong>(length))) return false;
        for (DDS_Long i = 0; i < length; ++i) {
            const void *element = ops.get_reference(seq, i);
            if (element == nullptr || !value(*type.content_type, static_cast<const unsigned char *>(element)))
                return false;
        }
        return true;
    }

    bool structPlain(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &m = type.members[i];
            if (inForm(type, i) && !value(*m.type, sample + m.offset)) return false;
        }
        return true;
    }

    bool unionPlain(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        if (!value(*type.discriminator_type, sample)) return false;
        const DDS_TypeCodeMember *branch = selectedBranch(type, discriminatorOf(sample));
        return branch == nullptr || value(*branch->type, sample + branch->offset);
    }

    bool parameter(DDS_UnsignedLong id, const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        OBLX_CdrParameterHeader header;
        bool extended = encoding_.extendedHeaders && !isPrimitive(type);
        return sink_.beginParameter(header, id, extended) && value(type, sample) && sink_.endParameter(header);
    }

    template <typename Members>
    bool parameterList(Members writeMembers) noexcept {
        bool skipEnd = sink_.enterList();
        bool written = writeMembers() && (skipEnd || sink_.listEnd());
        sink_.leaveList(skipEnd);
        return written;
    }

    bool structList(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        return parameterList([&] {
            for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
                const DDS_TypeCodeMember &m = type.members[i];
                if (inForm(type, i) && !parameter(static_cast<DDS_UnsignedLong>(m.id), *m.type, sample + m.offset))
                    return false;
            }
            return true;
        });
    }

    // The discriminator as member 0, then the branch it selects, if any.
    bool unionList(const DDS_TypeCode &type, const unsigned char *sample) noexcept {
        return parameterList([&] {
            if (!parameter(0, *type.discriminator_type, sample)) return false;
            const DDS_TypeCodeMember *branch = selectedBranch(type, discriminatorOf(sample));
            return branch == nullptr ||
                   parameter(static_cast<DDS_UnsignedLong>(branch->id), *branch->type, sample + branch->offset);
        });
    }

    static DDS_Long discriminatorOf(const unsigned char *sample) noexcept {
        DDS_Long label;
        std::memcpy(&label, sample, sizeof label);
        return label;
    }

    Sink &sink_;
    const Encoding &encoding_;
};

}  // namespace

bool serialize(OBLX_CdrStream &stream, const DDS_TypeCode &type, const void *sample,
               const Encoding &encoding) noexcept {
    StreamSink sink(stream);
    return Encoder<StreamSink>(sink, encoding).value(type, static_cast<const unsigned char *>(sample));
}

std::uint64_t serializedSize(const DDS_TypeCode &type, const void *sample, std::uint64_t start,
                             const Encoding &encoding) noexcept {
    MeasuringSink sink(start);
    if (!Encoder<MeasuringSink>(sink, encoding).value(type, static_cast<const unsigned char *>(sample))) return 0;
    return sink.position() - start;
}

}  // namespace vexar::cdr
