// Writing a sample by its plan, and measuring what writing it would take:
// one encoder over two sinks, so that a size is always the bytes written.
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
    bool words(const void *values, DDS_UnsignedLong count) noexcept { return writeWords(stream_, values, count); }
    bool count(DDS_UnsignedLong count) noexcept { return write<std::uint32_t>(stream_, count); }
    bool string(const char *value, DDS_UnsignedLong maximumLength) noexcept {
        return writeString(stream_, value, maximumLength);
    }
    bool beginParameter(OBLX_CdrParameterHeader &header, DDS_UnsignedLong id, bool extended) noexcept {
        return writeParameterHeader(stream_, header, id, extended, false);
    }
    bool endParameter(const OBLX_CdrParameterHeader &header) noexcept {
        return finishParameterHeader(stream_, header);
    }
    bool completeParameter(DDS_UnsignedLong id, DDS_UnsignedLong length) noexcept {
        return writeCompleteParameterHeader(stream_, id, length);
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
    bool words(const void *, DDS_UnsignedLong count) noexcept {
        advance(4, std::uint64_t{count} * 4);
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
    bool completeParameter(DDS_UnsignedLong, DDS_UnsignedLong) noexcept {
        advance(4, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE);
        return true;
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

DDS_Long discriminatorAt(const unsigned char *sample) noexcept {
    DDS_Long label;
    std::memcpy(&label, sample, sizeof label);
    return label;
}

template <typename Sink>
class Encoder {
public:
    Encoder(Sink &sink, const std::vector<Step> &steps) noexcept : sink_(sink), steps_(steps.data()) {}

    // Runs the steps [begin, end) on the value at `base`.
    bool run(std::uint32_t begin, std::uint32_t end, const unsigned char *base) noexcept {
        for (std::uint32_t i = begin; i < end;) {
            const Step &step = steps_[i];
            const unsigned char *at = base + step.offset;
            bool written;
            switch (step.kind) {
            case StepKind::words:
                written = sink_.words(at, step.bound);
                break;
            case StepKind::primitive:
            case StepKind::enumeration:
                written = sink_.primitive(at, step.size);
                break;
            case StepKind::string:
                written = sink_.string(*reinterpret_cast<const char *const *>(at), step.bound);
                break;
            case StepKind::sequence:
                written = sequence(i, at);
                break;
            case StepKind::list:
                written = list(i, base);
                break;
            default:
                written = false;
            }
            if (!written) return false;
            i = step.end != 0 ? step.end : i + 1;  // past a block's contents
        }
        return true;
    }

private:
    bool sequence(std::uint32_t index, const unsigned char *record) noexcept {
        const Step &step = steps_[index];
        const DDS_TypeCodeSequenceOps &ops = *step.type->sequence_ops;
        // The sequence operations take a mutable record: a zero-filled one is initialized on first use.
        void *seq = const_cast<unsigned char *>(record);
        DDS_Long length = ops.get_length(seq);
        if (length < 0 || static_cast<DDS_UnsignedLong>(length) > step.bound) return false;
        if (!sink_.count(static_cast<DDS_UnsignedLong>(length))) return false;
        for (DDS_Long i = 0; i < length; ++i) {
            const void *element = ops.get_reference(seq, i);
            if (element == nullptr || !run(index + 1, step.end, static_cast<const unsigned char *>(element)))
                return false;
        }
        return true;
    }

    bool member(std::uint32_t index, const unsigned char *base) noexcept {
        const Step &step = steps_[index];
        if (step.bound != 0 && !step.extendedHeader) {  // a fixed length: the header is written whole
            const Step &words = steps_[index + 1];
            return sink_.completeParameter(step.id, step.bound) && sink_.words(base + words.offset, words.bound);
        }
        OBLX_CdrParameterHeader header;
        return sink_.beginParameter(header, step.id, step.extendedHeader) && run(index + 1, step.end, base) &&
               sink_.endParameter(header);
    }

    // A struct writes every member; a union its discriminator and the
    // branch that it selects, if any.
    bool members(const Step &list, std::uint32_t first, const unsigned char *base) noexcept {
        if (!list.isUnion) {
            for (std::uint32_t i = first; i < list.end; i = steps_[i].end) {
                if (!member(i, base)) return false;
            }
            return true;
        }
        if (!member(first, base)) return false;
        DDS_Long label = discriminatorAt(base + list.offset);
        std::uint32_t chosen = list.end;
        for (std::uint32_t i = steps_[first].end; i < list.end; i = steps_[i].end) {
            if (steps_[i].label == label) {
                chosen = i;
                break;
            }
            if (steps_[i].isDefault) chosen = i;
        }
        return chosen == list.end || member(chosen, base);
    }

    bool list(std::uint32_t index, const unsigned char *base) noexcept {
        bool skipEnd = sink_.enterList();
        bool written = members(steps_[index], index + 1, base) && (skipEnd || sink_.listEnd());
        sink_.leaveList(skipEnd);
        return written;
    }

    Sink &sink_;
    const Step *steps_; // a plan's steps are fixed once compiled
};

template <typename Sink>
bool encode(Sink &sink, const Plan &plan, const void *sample) noexcept {
    const auto &steps = plan.steps();
    return plan.valid() && Encoder<Sink>(sink, steps)
                               .run(0, static_cast<std::uint32_t>(steps.size()),
                                    static_cast<const unsigned char *>(sample));
}

}  // namespace

bool serialize(OBLX_CdrStream &stream, const Plan &plan, const void *sample) noexcept {
    StreamSink sink(stream);
    return encode(sink, plan, sample);
}

std::uint64_t serializedSize(const Plan &plan, const void *sample, std::uint64_t start) noexcept {
    MeasuringSink sink(start);
    return encode(sink, plan, sample) ? sink.position() - start : 0;
}

}  // namespace vexar::cdr
