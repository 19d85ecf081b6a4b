// The exported CDR stream: null-checked C entry points over cdr_stream.hpp.
#include "platform/cdr/cdr_stream.h"

#include "platform/cdr/cdr_stream.hpp"

namespace cdr = vexar::cdr;

namespace {

constexpr DDS_Boolean toBoolean(bool value) { return value ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE; }

bool forEachElement(OBLX_CdrStream *self, void *elements, DDS_UnsignedLong count, size_t elementSize,
                    OBLX_CdrElementFunction function, void *context) {
    if (function == nullptr || (count > 0 && elements == nullptr)) return false;
    auto *element = static_cast<unsigned char *>(elements);
    for (DDS_UnsignedLong i = 0; i < count; ++i, element += elementSize) {
        if (!function(self, element, context)) return false;
    }
    return true;
}

}  // namespace

extern "C" {

void OBLX_CdrStream_init(OBLX_CdrStream *self, void *buffer, DDS_UnsignedLong length) {
    if (self != nullptr) cdr::init(*self, static_cast<unsigned char *>(buffer), length);
}

void OBLX_CdrStream_initForRead(OBLX_CdrStream *self, const void *buffer, DDS_UnsignedLong length) {
    // Reading never writes through the pointer; the record has one buffer field for both uses.
    OBLX_CdrStream_init(self, const_cast<void *>(buffer), length);
}

void OBLX_CdrStream_setBigEndian(OBLX_CdrStream *self, DDS_Boolean bigEndian) {
    if (self != nullptr) cdr::setBigEndian(*self, bigEndian != 0);
}

DDS_Boolean OBLX_CdrStream_isBigEndian(const OBLX_CdrStream *self) {
    return toBoolean(self != nullptr && self->bigEndian);
}

DDS_Boolean OBLX_CdrStream_isNativeBigEndian(void) { return toBoolean(cdr::kNativeBigEndian); }

unsigned char *OBLX_CdrStream_getBuffer(const OBLX_CdrStream *self) { return self != nullptr ? self->buffer : nullptr; }

DDS_UnsignedLong OBLX_CdrStream_getLength(const OBLX_CdrStream *self) { return self != nullptr ? self->length : 0; }

DDS_UnsignedLong OBLX_CdrStream_getPosition(const OBLX_CdrStream *self) { return self != nullptr ? self->position : 0; }

DDS_Boolean OBLX_CdrStream_setPosition(OBLX_CdrStream *self, DDS_UnsignedLong position) {
    return toBoolean(self != nullptr && cdr::setPosition(*self, position));
}

DDS_UnsignedLong OBLX_CdrStream_getRemainder(const OBLX_CdrStream *self) {
    return self != nullptr ? cdr::remainder(*self) : 0;
}

DDS_Boolean OBLX_CdrStream_checkSize(const OBLX_CdrStream *self, DDS_UnsignedLong size) {
    return toBoolean(self != nullptr && cdr::checkSize(*self, size));
}

DDS_UnsignedLong OBLX_CdrStream_limitLength(OBLX_CdrStream *self, DDS_UnsignedLong end) {
    return self != nullptr ? cdr::limitLength(*self, end) : 0;
}

void OBLX_CdrStream_restoreLength(OBLX_CdrStream *self, DDS_UnsignedLong length) {
    if (self != nullptr) self->length = length;
}

DDS_Boolean OBLX_CdrStream_alignForRead(OBLX_CdrStream *self, DDS_UnsignedLong alignment) {
    return toBoolean(self != nullptr && std::has_single_bit(alignment) && cdr::alignForRead(*self, alignment));
}

DDS_Boolean OBLX_CdrStream_alignForWrite(OBLX_CdrStream *self, DDS_UnsignedLong alignment) {
    return toBoolean(self != nullptr && std::has_single_bit(alignment) && cdr::alignForWrite(*self, alignment));
}

DDS_UnsignedLong OBLX_CdrStream_resetAlignment(OBLX_CdrStream *self) {
    return self != nullptr ? cdr::resetAlignment(*self) : 0;
}

void OBLX_CdrStream_restoreAlignment(OBLX_CdrStream *self, DDS_UnsignedLong origin) {
    if (self != nullptr) self->alignmentOrigin = origin;
}

DDS_Boolean OBLX_CdrStream_serializeUnsignedLong(OBLX_CdrStream *self, DDS_UnsignedLong value) {
    return toBoolean(self != nullptr && cdr::write<std::uint32_t>(*self, value));
}

DDS_Boolean OBLX_CdrStream_deserializeUnsignedLong(OBLX_CdrStream *self, DDS_UnsignedLong *value) {
    return toBoolean(self != nullptr && value != nullptr && cdr::read(*self, *value));
}

DDS_Boolean OBLX_CdrStream_serializeLong(OBLX_CdrStream *self, DDS_Long value) {
    return toBoolean(self != nullptr && cdr::writeLong(*self, value));
}

DDS_Boolean OBLX_CdrStream_deserializeLong(OBLX_CdrStream *self, DDS_Long *value) {
    return toBoolean(self != nullptr && value != nullptr && cdr::readLong(*self, *value));
}

DDS_Boolean OBLX_CdrStream_serializeUnsignedShort(OBLX_CdrStream *self, DDS_UnsignedShort value) {
    return toBoolean(self != nullptr && cdr::write<std::uint16_t>(*self, value));
}

DDS_Boolean OBLX_CdrStream_deserializeUnsignedShort(OBLX_CdrStream *self, DDS_UnsignedShort *value) {
    return toBoolean(self != nullptr && value != nullptr && cdr::read(*self, *value));
}

DDS_Boolean OBLX_CdrStream_serializeEncapsulation(OBLX_CdrStream *self, DDS_UnsignedShort id,
                                                  DDS_UnsignedShort options) {
    return toBoolean(self != nullptr && cdr::writeEncapsulation(*self, id, options));
}

DDS_Boolean OBLX_CdrStream_deserializeEncapsulation(OBLX_CdrStream *self, DDS_UnsignedShort *id,
                                                    DDS_UnsignedShort *options) {
    DDS_UnsignedShort ignored;
    return toBoolean(self != nullptr && id != nullptr &&
                     cdr::readEncapsulation(*self, *id, options != nullptr ? *options : ignored));
}

DDS_Boolean OBLX_CdrStream_serializeString(OBLX_CdrStream *self, const char *value, DDS_UnsignedLong maximumLength) {
    return toBoolean(self != nullptr && cdr::writeString(*self, value, maximumLength));
}

DDS_Boolean OBLX_CdrStream_deserializeString(OBLX_CdrStream *self, char *buffer, DDS_UnsignedLong maximumLength) {
    return toBoolean(self != nullptr && cdr::readString(*self, buffer, maximumLength));
}

DDS_Boolean OBLX_CdrStream_skipString(OBLX_CdrStream *self, DDS_UnsignedLong maximumLength) {
    return toBoolean(self != nullptr && cdr::skipString(*self, maximumLength));
}

DDS_Boolean OBLX_CdrStream_serializeComplexArray(OBLX_CdrStream *self, const void *elements, DDS_UnsignedLong count,
                                                 size_t elementSize, OBLX_CdrElementFunction function, void *context) {
    return toBoolean(self != nullptr &&
                     forEachElement(self, const_cast<void *>(elements), count, elementSize, function, context));
}

DDS_Boolean OBLX_CdrStream_deserializeComplexArray(OBLX_CdrStream *self, void *elements, DDS_UnsignedLong count,
                                                   size_t elementSize, OBLX_CdrElementFunction function,
                                                   void *context) {
    return toBoolean(self != nullptr && forEachElement(self, elements, count, elementSize, function, context));
}

DDS_Boolean OBLX_CdrStream_serializeComplexSequence(OBLX_CdrStream *self, const void *elements, DDS_UnsignedLong length,
                                                    DDS_UnsignedLong maximum, size_t elementSize,
                                                    OBLX_CdrElementFunction function, void *context) {
    return toBoolean(self != nullptr && length <= maximum && cdr::write<std::uint32_t>(*self, length) &&
                     forEachElement(self, const_cast<void *>(elements), length, elementSize, function, context));
}

DDS_Boolean OBLX_CdrStream_deserializeComplexSequence(OBLX_CdrStream *self, void *elements, DDS_UnsignedLong *length,
                                                      DDS_UnsignedLong maximum, size_t elementSize,
                                                      OBLX_CdrElementFunction function, void *context) {
    DDS_UnsignedLong count;
    if (self == nullptr || length == nullptr || !cdr::read(*self, count) || count > maximum ||
        !forEachElement(self, elements, count, elementSize, function, context))
        return DDS_BOOLEAN_FALSE;
    *length = count;
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean OBLX_CdrStream_serializeParameterHeader(OBLX_CdrStream *self, OBLX_CdrParameterHeader *header,
                                                    DDS_UnsignedLong memberId, DDS_Boolean extended,
                                                    DDS_Boolean mustUnderstand) {
    return toBoolean(self != nullptr && header != nullptr &&
                     cdr::writeParameterHeader(*self, *header, memberId, extended != 0, mustUnderstand != 0));
}

DDS_Boolean OBLX_CdrStream_finishParameterHeader(OBLX_CdrStream *self, const OBLX_CdrParameterHeader *header) {
    return toBoolean(self != nullptr && header != nullptr && cdr::finishParameterHeader(*self, *header));
}

DDS_Boolean OBLX_CdrStream_serializeListEnd(OBLX_CdrStream *self) {
    return toBoolean(self != nullptr && cdr::writeListEnd(*self));
}

DDS_Boolean OBLX_CdrStream_deserializeParameterHeader(OBLX_CdrStream *self, OBLX_CdrParameterHeader *header) {
    return toBoolean(self != nullptr && header != nullptr && cdr::readParameterHeader(*self, *header));
}

DDS_Boolean OBLX_CdrParameterHeader_isListEnd(const OBLX_CdrParameterHeader *header) {
    return toBoolean(header != nullptr && cdr::isListEnd(*header));
}

DDS_Boolean OBLX_CdrStream_moveToNextParameterHeader(OBLX_CdrStream *self, const OBLX_CdrParameterHeader *header) {
    return toBoolean(self != nullptr && header != nullptr && cdr::moveToNextParameterHeader(*self, *header));
}

DDS_Boolean OBLX_CdrStream_isDirty(const OBLX_CdrStream *self) { return toBoolean(self != nullptr && self->dirty); }

void OBLX_CdrStream_setDirty(OBLX_CdrStream *self, DDS_Boolean dirty) {
    if (self != nullptr) self->dirty = toBoolean(dirty != 0);
}

DDS_Boolean OBLX_CdrStream_getSkipListEnd(const OBLX_CdrStream *self) {
    return toBoolean(self != nullptr && self->skipListEnd);
}

void OBLX_CdrStream_setSkipListEnd(OBLX_CdrStream *self, DDS_Boolean skip) {
    if (self != nullptr) self->skipListEnd = toBoolean(skip != 0);
}

DDS_Boolean OBLX_CdrStream_getUnassignable(const OBLX_CdrStream *self) {
    return toBoolean(self != nullptr && self->unassignable);
}

void OBLX_CdrStream_setUnassignable(OBLX_CdrStream *self, DDS_Boolean unassignable) {
    if (self != nullptr) self->unassignable = toBoolean(unassignable != 0);
}

}  // extern "C"
