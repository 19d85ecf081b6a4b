// Reading a sample by its plan, passing over one (no sample), checking one
// as it passes, and putting a sample back to its initial values.
#include <cstring>

#include "platform/cdr/cdr_stream.hpp"
#include "platform/cdr/encoding.hpp"

namespace vexar::cdr {
namespace {

bool isEnumerator(const DDS_TypeCode &enumeration, DDS_Long value) noexcept {
    for (DDS_UnsignedLong i = 0; i < enumeration.member_count; ++i) {
        if (enumeration.members[i].label == value) return true;
    }
    return false;
}

// Whether `value` is one of an enumeration's values: inside `low`..`high`,
// and among the enumerators of `sparse` when they leave gaps there.
bool holdsEnumerator(DDS_Long low, DDS_Long high, const DDS_TypeCode *sparse, DDS_Long value) noexcept {
    return value >= low && value <= high && (sparse == nullptr || isEnumerator(*sparse, value));
}

// Reads from a CDR stream in the byte order `Order`.
template <typename Order>
class Decoder {
public:
    // `checking`: values that are read without being stored are still
    // checked as storing them would, and an enumeration out of range marks
    // the stream unassignable.
    Decoder(OBLX_CdrStream &stream, const Plan &plan, bool checking) noexcept
        : stream_(stream), steps_(plan.steps().data()), checks_(plan.enumChecks().data()), checking_(checking) {}

    // Runs the steps [begin, end) on the value at `base`; a null base, or a
    // step that is not kept, reads without storing.
    bool run(std::uint32_t begin, std::uint32_t end, unsigned char *base) noexcept {
        for (std::uint32_t i = begin; i < end;) {
            const Step &step = steps_[i];
            unsigned char *at = base != nullptr && step.kept ? base + step.offset : nullptr;
            bool read;
            switch (step.kind) {
            case StepKind::words:
                read = words(i, base);
                break;
            case StepKind::primitive:
                read = readPrimitive<Order>(stream_, at, step.size);
                break;
            case StepKind::enumeration:
                read = enumeration(step, at);
                break;
            case StepKind::string:
                read = string(step, base);
                break;
            case StepKind::sequence:
                read = sequence(i, at);
                break;
            case StepKind::list:
                read = list(i, at != nullptr ? base : nullptr);
                break;
            default:
                read = false;
            }
            if (!read) return false;
            i = step.end != 0 ? step.end : i + 1;  // past a block's contents
        }
        return true;
    }

private:
    // A value outside the enumerators is not stored: it marks the stream
    // unassignable, which fails a whole-sample read.
    void store(const Step &step, unsigned char *at, DDS_Long value) noexcept {
        bool valid = step.kind != StepKind::enumeration ||
                     holdsEnumerator(step.low, step.high, step.dense ? nullptr : step.type, value);
        if (!valid) stream_.unassignable = DDS_BOOLEAN_TRUE;
        else if (at != nullptr) std::memcpy(at, &value, sizeof value);
    }

    bool string(const Step &step, unsigned char *base) noexcept {
        if (base == nullptr || !step.kept) return skipString<Order>(stream_, step.bound);
        return readString<Order>(stream_, *reinterpret_cast<char **>(base + step.offset), step.bound);
    }

    bool enumeration(const Step &step, unsigned char *at) noexcept {
        std::uint32_t raw;
        if (!read<std::uint32_t, Order>(stream_, raw)) return false;
        auto value = static_cast<DDS_Long>(raw);
        if (at != nullptr || checking_) store(step, at, value);
        return true;
    }

    // True when every enumeration of the run read from `position` holds one of its values.
    bool enumeratorsValid(const Step &run, DDS_UnsignedLong position) const noexcept {
        for (const EnumCheck *check = checks_ + run.checks; check != checks_ + run.checksEnd; ++check) {
            auto value = static_cast<DDS_Long>(load<std::uint32_t, Order>(stream_, position + check->position));
            if (!holdsEnumerator(check->low, check->high, check->sparse, value)) return false;
        }
        return true;
    }

    // The run's values are checked for room once, then copied as one block
    // when nothing in it is dropped or out of range, else stored one by one.
    bool words(std::uint32_t index, unsigned char *base) noexcept {
        const Step &run = steps_[index];
        if (!alignForRead(stream_, 4) || run.bound > remainder(stream_) / 4) return false;
        DDS_UnsignedLong position = stream_.position;
        bool stored = base != nullptr && run.kept;
        if ((stored || checking_) && enumeratorsValid(run, position)) {
            if (stored) copyWords(base + run.offset, stream_.buffer + position, run.bound, Order::swap(stream_));
            stream_.position = position + run.bound * 4;
            return true;
        }
        for (std::uint32_t i = index + 1; i < run.end; ++i, position += 4) {
            const Step &word = steps_[i];
            unsigned char *at = base != nullptr && word.kept ? base + word.offset : nullptr;
            if (at != nullptr || checking_)
                store(word, at, static_cast<DDS_Long>(load<std::uint32_t, Order>(stream_, position)));
        }
        stream_.position = position;
        return true;
    }

    bool sequence(std::uint32_t index, unsigned char *record) noexcept {
        const Step &step = steps_[index];
        DDS_UnsignedLong count;
        if (!read<DDS_UnsignedLong, Order>(stream_, count) || count > step.bound) return false;
        const DDS_TypeCodeSequenceOps &ops = *step.type->sequence_ops;
        auto length = static_cast<DDS_Long>(count);
        if (record != nullptr && !ops.ensure_length(record, length, static_cast<DDS_Long>(step.bound))) return false;
        for (DDS_Long i = 0; i < length; ++i) {
            void *element = record != nullptr ? ops.get_reference(record, i) : nullptr;
            if (record != nullptr && element == nullptr) return false;
            if (!run(index + 1, step.end, static_cast<unsigned char *>(element))) return false;
        }
        return true;
    }

    // The member of the list whose id is `id`, or the list's end. Writers
    // send members in order, so the one after the last found (`expected`)
    // is tried first.
    std::uint32_t memberWithId(const Step &list, std::uint32_t first, std::uint32_t expected,
                               DDS_UnsignedLong id) const noexcept {
        if (expected < list.end && steps_[expected].id == id) return expected;
        std::uint32_t i = first;
        while (i < list.end && steps_[i].id != id) i = steps_[i].end;
        return i;
    }

    // Reads one member inside its parameter: its reader cannot look past
    // the parameter's length.
    bool member(std::uint32_t index, const OBLX_CdrParameterHeader &header, unsigned char *base) noexcept {
        const Step &member = steps_[index];
        // A fixed-length member that fits its parameter is read straight.
        if (member.bound != 0 && header.length >= member.bound) return words(index + 1, base);
        DDS_UnsignedLong length = limitLength(stream_, header.valueStart + header.length);
        bool onlyAString = member.end == index + 2 && steps_[index + 1].kind == StepKind::string;
        bool read = onlyAString ? string(steps_[index + 1], base) : run(index + 1, member.end, base);
        stream_.length = length;
        return read;
    }

    // One parameter of a list: a known member is read, 0x3F03 (ignore)
    // passes, an unknown one passes unless it must be understood (a union
    // knows only its own ids).
    bool parameter(const Step &list, std::uint32_t index, std::uint32_t &expected,
                   const OBLX_CdrParameterHeader &header, unsigned char *base) noexcept {
        if (!header.extended && header.memberId == OBLX_CDR_PID_IGNORE) return true;
        std::uint32_t found = memberWithId(list, index + 1, expected, header.memberId);
        if (found == list.end) return !list.isUnion && !header.mustUnderstand;
        expected = steps_[found].end;
        return (!steps_[found].kept && !checking_) || member(found, header, base);
    }

    // Until the sentinel, or the end of the bytes. After each parameter the
    // stream moves to its end, whatever the member's reader consumed. With no
    // sample the members are only passed over, unless checking.
    bool list(std::uint32_t index, unsigned char *base) noexcept {
        const Step &step = steps_[index];
        OBLX_CdrParameterHeader header;
        std::uint32_t expected = index + 1;
        while (remainder(stream_) > 0) {
            if (!readParameterHeader<Order>(stream_, header)) return false;
            if (isListEnd(header)) return true;
            if ((base != nullptr || checking_) && !parameter(step, index, expected, header, base)) return false;
            if (!moveToNextParameterHeader(stream_, header)) return false;
        }
        return true;
    }

    OBLX_CdrStream &stream_;
    const Step *steps_;  // a plan's steps and checks are fixed once compiled
    const EnumCheck *checks_;
    bool checking_;
};

}  // namespace

namespace {

bool decode(OBLX_CdrStream &stream, const Plan &plan, void *sample, bool checking) noexcept {
    if (!plan.valid()) return false;
    auto end = static_cast<std::uint32_t>(plan.steps().size());
    auto *base = static_cast<unsigned char *>(sample);
    return stream.needByteSwap ? Decoder<FixedOrder<true>>(stream, plan, checking).run(0, end, base)
                               : Decoder<FixedOrder<false>>(stream, plan, checking).run(0, end, base);
}

}  // namespace

bool deserialize(OBLX_CdrStream &stream, const Plan &plan, void *sample) noexcept {
    return decode(stream, plan, sample, false);
}

bool check(OBLX_CdrStream &stream, const Plan &plan, void *kept) noexcept {
    stream.unassignable = DDS_BOOLEAN_FALSE;
    return decode(stream, plan, kept, true) && !stream.unassignable;
}

void resetToInitialValues(const Plan &plan, void *sample) noexcept {
    auto *base = static_cast<unsigned char *>(sample);
    for (const ResetStep &reset : plan.resetSteps()) {
        unsigned char *at = base + reset.offset;
        switch (reset.kind) {
        case ResetStep::Kind::zeros:
            std::memset(at, 0, reset.size);
            break;
        case ResetStep::Kind::word:
            std::memcpy(at, &reset.value, sizeof reset.value);
            break;
        case ResetStep::Kind::string:
            if (char *text = *reinterpret_cast<char **>(at)) text[0] = '\0';
            break;
        case ResetStep::Kind::sequence:
            reset.type->sequence_ops->set_length(at, 0);
            break;
        }
    }
}

}  // namespace vexar::cdr
