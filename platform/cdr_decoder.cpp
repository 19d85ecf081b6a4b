// Reading a sample, or passing over one (a null sample stores nothing).
#include <cstring>

#include "platform/cdr_stream.hpp"
#include "platform/cdr_walker.hpp"

namespace vexar::cdr {
namespace {

// Where a parameter's value goes: the member's type and its place in the
// sample, and whether this read keeps it.
struct ParameterTarget {
    const DDS_TypeCode *type = nullptr;
    size_t offset = 0;
    bool kept = true;
};

class Decoder {
public:
    Decoder(OBLX_CdrStream &stream, const Decoding &decoding) noexcept : stream_(stream), decoding_(decoding) {}

    bool value(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        if (DDS_Long ignored; kindOf(type) == DDS_TK_ENUM) return enumeration(type, sample, ignored);
        if (DDS_UnsignedLong size = primitiveSize(type)) return readPrimitive(stream_, sample, size);
        switch (kindOf(type)) {
        case DDS_TK_STRING:
            return sample != nullptr ? readString(stream_, *reinterpret_cast<char **>(sample), type.length + 1)
                                     : skipString(stream_, type.length + 1);
        case DDS_TK_ARRAY:
            return array(type, sample);
        case DDS_TK_SEQUENCE:
            return sequence(type, sample);
        case DDS_TK_STRUCT:
            return isMutable(type) ? parameterList(type, sample) : structPlain(type, sample);
        case DDS_TK_UNION:
            return isMutable(type) ? parameterList(type, sample) : unionPlain(type, sample);
        default:
            return false;
        }
    }

private:
    static unsigned char *at(unsigned char *sample, size_t offset) noexcept {
        return sample != nullptr ? sample + offset : nullptr;
    }

    // A value outside the enumerators is not stored: it marks the stream
    // unassignable, which fails a whole-sample read. `value` is what was read.
    bool enumeration(const DDS_TypeCode &type, unsigned char *sample, DDS_Long &value) noexcept {
        if (!readLong(stream_, value)) return false;
        if (sample == nullptr) return true;
        if (DDS_TypeCode_find_member_by_label(&type, value) >= 0)
            std::memcpy(sample, &value, sizeof value);
        else
            stream_.unassignable = DDS_BOOLEAN_TRUE;
        return true;
    }

    bool array(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        const DDS_TypeCode &element = *type.content_type;
        for (DDS_UnsignedLong i = 0; i < type.dimension; ++i) {
            if (!value(element, at(sample, i * element.sample_size))) return false;
        }
        return true;
    }

    bool sequence(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        DDS_UnsignedLong count;
        if (!read32(stream_, count) || count > type.length) return false;
        const DDS_TypeCodeSequenceOps &ops = *type.sequence_ops;
        auto length = static_cast<DDS_Long>(count);
        if (sample != nullptr && !ops.ensure_length(sample, length, static_cast<DDS_Long>(type.length))) return false;
        for (DDS_Long i = 0; i < length; ++i) {
            void *element = sample != nullptr ? ops.get_reference(sample, i) : nullptr;
            if (sample != nullptr && element == nullptr) return false;
            if (!value(*type.content_type, static_cast<unsigned char *>(element))) return false;
        }
        return true;
    }

    // Plain members in order. The key form holds only its members; a full
    // form read for the key passes over the others.
    bool structPlain(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &m = type.members[i];
            bool keyMember = isKeyFormMember(type, i);
            if (decoding_.keyForm && !keyMember) continue;
            bool kept = keyMember || !decoding_.keysOnly;
            if (!value(*m.type, kept ? at(sample, m.offset) : nullptr)) return false;
        }
        return true;
    }

    bool unionPlain(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        DDS_Long label;
        const DDS_TypeCode &discriminator = *type.discriminator_type;
        bool read = kindOf(discriminator) == DDS_TK_ENUM ? enumeration(discriminator, sample, label)
                                                          : readLong(stream_, label);
        if (!read) return false;
        if (sample != nullptr && kindOf(discriminator) != DDS_TK_ENUM) std::memcpy(sample, &label, sizeof label);
        const DDS_TypeCodeMember *branch = selectedBranch(type, label);
        return branch == nullptr || value(*branch->type, at(sample, branch->offset));
    }

    // A union's members are its discriminator (id 0) and its branches; an
    // id that names neither is an error, whatever its flags.
    static bool findTarget(const DDS_TypeCode &type, DDS_UnsignedLong id, ParameterTarget &target) noexcept {
        bool isUnion = kindOf(type) == DDS_TK_UNION;
        if (isUnion && id == 0) {
            target = {type.discriminator_type, 0, true};
            return true;
        }
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &m = type.members[i];
            if (static_cast<DDS_UnsignedLong>(m.id) == id) {
                target = {m.type, m.offset, isKeyFormMember(type, i)};
                return true;
            }
        }
        return false;
    }

    // Reads one member inside its parameter: the member's reader cannot
    // look past the parameter's length.
    bool member(const OBLX_CdrParameterHeader &header, const ParameterTarget &target, unsigned char *sample) noexcept {
        DDS_UnsignedLong length = limitLength(stream_, header.valueStart + header.length);
        bool read = value(*target.type, sample + target.offset);
        stream_.length = length;
        return read;
    }

    // Until the sentinel, or the end of the bytes. Unknown members pass
    // unless they must be understood; 0x3F03 (ignore) always passes.
    bool parameterList(const DDS_TypeCode &type, unsigned char *sample) noexcept {
        bool isUnion = kindOf(type) == DDS_TK_UNION;
        OBLX_CdrParameterHeader header;
        while (remainder(stream_) > 0) {
            if (!readParameterHeader(stream_, header)) return false;
            if (isListEnd(header)) return true;
            ParameterTarget target;
            bool ignored = !header.extended && header.memberId == OBLX_CDR_PID_IGNORE;
            if (!ignored && sample != nullptr) {
                if (findTarget(type, header.memberId, target)) {
                    if ((target.kept || !decoding_.keysOnly) && !member(header, target, sample)) return false;
                } else if (isUnion || header.mustUnderstand) {
                    return false;
                }
            }
            if (!moveToNextParameterHeader(stream_, header)) return false;
        }
        return true;
    }

    OBLX_CdrStream &stream_;
    const Decoding &decoding_;
};

}  // namespace

bool deserialize(OBLX_CdrStream &stream, const DDS_TypeCode &type, void *sample, const Decoding &decoding) noexcept {
    return Decoder(stream, decoding).value(type, static_cast<unsigned char *>(sample));
}

}  // namespace vexar::cdr
