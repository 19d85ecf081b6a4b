// Writing a sample by its plan, and measuring what writing it would take:
// one encoder over two sinks, so that a size is always the bytes written.
#include <cstring>

#include "platform/cdr/cdr_stream.hpp"
#include "platform/cdr/encoding.hpp"

namespace vexar::cdr {
namespace {

// Writes into a CDR stream in the byte order `Order`.
template <typename Order>
class StreamSink {
public:
    explicit StreamSink(OBLX_CdrStream &stream) noexcept : stream_(stream) {}

    bool primitive(const void *value, DDS_UnsignedLong size) noexcept {
        return writePrimitive<Order>(stream_, value, size);
    }
    bool words(const void *values, DDS_UnsignedLong count) noexcept {
        return writeWords<Order>(stream_, values, count);
    }
    bool count(DDS_UnsignedLong count) noexcept { return write<std::uint32_t, Order>(stream_, count); }
    bool string(const char *value, DDS_UnsignedLong maximumLength) noexcept {
        return writeString<Order>(stream_, value, maximumLength);
    }
    bool beginParameter(OBLX_CdrParameterHeader &header, DDS_UnsignedLong id, bool extended) noexcept {
        return writeParameterHeader<Order>(stream_, header, id, extended, false);
    }
    bool endParameter(const OBLX_CdrParameterHeader &header) noexcept {
        return finishParameterHeader<Order>(stream_, header);
    }
    bool wordsParameter(DDS_UnsignedLong id, const void *values, DDS_UnsignedLong count) noexcept {
        return writeWordsParameter<Order>(stream_, id, values, count);
    }
    bool stringParameter(DDS_UnsignedLong id, const char *value, DDS_UnsignedLong maximumLength) noexcept {
        return writeStringParameter<Order>(stream_, id, value, maximumLength);
    }
    bool listEnd() noexcept { return writeListEnd<Order>(stream_); }

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
    bool wordsParameter(DDS_UnsignedLong, const void *, DDS_UnsignedLong count) noexcept {
        advance(4, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE + std::uint64_t{count} * 4);
        return count <= OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH / 4;
    }
    bool stringParameter(DDS_UnsignedLong id, const char *value, DDS_UnsignedLong maximumLength) noexcept {
        OBLX_CdrParameterHeader header;
        return beginParameter(header, id, false) && string(value, maximumLength) && endParameter(header);
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

// Runs a plan's write ops over a sink.
template <typename Sink>
class Encoder {
public:
    Encoder(Sink &sink, const std::vector<WriteOp> &ops) noexcept : sink_(sink), ops_(ops.data()) {}

    // Runs the ops [begin, end) on the value at `base`.
    bool run(std::uint32_t begin, std::uint32_t end, const unsigned char *base) noexcept {
        Open open[kMaxWriteNesting];  // filled by each open op before its close op reads it
        for (std::uint32_t i = begin; i < end; ++i) {
            const WriteOp &op = ops_[i];
            const unsigned char *at = base + op.offset;
            switch (op.kind) {
            case WriteKind::words:
                if (!sink_.words(at, op.count)) return false;
                break;
            case WriteKind::primitive:
                if (!sink_.primitive(at, op.size)) return false;
                break;
            case WriteKind::string:
                if (!sink_.string(*reinterpret_cast<const char *const *>(at), op.count)) return false;
                break;
            case WriteKind::fixedMember:
                if (!sink_.wordsParameter(op.id, at, op.count)) return false;
                break;
            case WriteKind::stringMember:
                if (!sink_.stringParameter(op.id, *reinterpret_cast<const char *const *>(at), op.count)) return false;
                break;
            case WriteKind::openMember:
                if (!sink_.beginParameter(open[op.slot].header, op.id, op.extendedHeader)) return false;
                break;
            case WriteKind::closeMember:
                if (!sink_.endParameter(open[op.slot].header)) return false;
                break;
            case WriteKind::openList:
                open[op.slot].skipEnd = sink_.enterList();
                break;
            case WriteKind::closeList: {
                bool skipEnd = open[op.slot].skipEnd;
                sink_.leaveList(skipEnd);
                if (!skipEnd && !sink_.listEnd()) return false;
                break;
            }
            case WriteKind::sequence:
                if (!sequence(i, at)) return false;
                i = op.end - 1;
                break;
            case WriteKind::select:
                if (!select(i, base)) return false;
                i = op.end - 1;
                break;
            case WriteKind::branch:
                return false;  // reached only through select
            }
        }
        return true;
    }

private:
    struct Open {
        OBLX_CdrParameterHeader header;  // an open member's
        bool skipEnd;                    // an open list's
    };

    bool sequence(std::uint32_t index, const unsigned char *record) noexcept {
        const WriteOp &op = ops_[index];
        const DDS_TypeCodeSequenceOps &ops = *op.type->sequence_ops;
        // The sequence operations take a mutable record: a zero-filled one is initialized on first use.
        void *seq = const_cast<unsigned char *>(record);
        DDS_Long length = ops.get_length(seq);
        if (length < 0 || static_cast<DDS_UnsignedLong>(length) > op.count) return false;
        if (!sink_.count(static_cast<DDS_UnsignedLong>(length))) return false;
        for (DDS_Long i = 0; i < length; ++i) {
            const void *element = ops.get_reference(seq, i);
            if (element == nullptr || !run(index + 1, op.end, static_cast<const unsigned char *>(element)))
                return false;
        }
        return true;
    }

    // The branch whose label is the discriminator's, else the default one, if any.
    bool select(std::uint32_t index, const unsigned char *base) noexcept {
        const WriteOp &op = ops_[index];
        DDS_Long label = discriminatorAt(base + op.offset);
        std::uint32_t chosen = op.end;
        for (std::uint32_t i = index + 1; i < op.end; i = ops_[i].end) {
            if (ops_[i].label == label) {
                chosen = i;
                break;
            }
            if (ops_[i].isDefault) chosen = i;
        }
        return chosen == op.end || run(chosen + 1, ops_[chosen].end, base);
    }

    Sink &sink_;
    const WriteOp *ops_;  // a plan's ops are fixed once compiled
};

template <typename Sink>
bool encode(Sink &sink, const Plan &plan, const void *sample) noexcept {
    const auto &ops = plan.writeOps();
    auto end = static_cast<std::uint32_t>(ops.size());
    return plan.valid() && Encoder<Sink>(sink, ops).run(0, end, static_cast<const unsigned char *>(sample));
}

template <typename Order>
bool encodeInOrder(OBLX_CdrStream &stream, const Plan &plan, const void *sample) noexcept {
    StreamSink<Order> sink(stream);
    return encode(sink, plan, sample);
}

}  // namespace

bool serialize(OBLX_CdrStream &stream, const Plan &plan, const void *sample) noexcept {
    bool outerSkipEnd = stream.dirty && stream.skipListEnd;
    if (stream.needByteSwap ? encodeInOrder<FixedOrder<true>>(stream, plan, sample)
                            : encodeInOrder<FixedOrder<false>>(stream, plan, sample))
        return true;
    // A failure inside a list leaves the skip mark as closing the list would have.
    if (plan.hasLists()) stream.skipListEnd = outerSkipEnd ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    return false;
}

std::uint64_t serializedSize(const Plan &plan, const void *sample, std::uint64_t start) noexcept {
    MeasuringSink sink(start);
    return encode(sink, plan, sample) ? sink.position() - start : 0;
}

}  // namespace vexar::cdr
