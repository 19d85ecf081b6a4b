// The sequence family, written once: Sequence<Record, Traits> implements
// every operation of platform/types/sequence.h over one record type, and
// OBLX_SEQUENCE_DEFINE emits the C functions of one instantiation.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "platform/log/report.h"
#include "platform/types/sequence.h"

namespace vexar::types {

// What a sequence needs from its element type: the element functions that
// bring an element into a usable state, take its memory back and copy it.
template <typename Traits, typename T>
concept SequenceElementTraits = requires(T *element, const T *source, const DDS_TypeAllocationParams_t *alloc,
                                         const DDS_TypeDeallocationParams_t *dealloc) {
    Traits::initialize(element, alloc);
    Traits::finalize(element, dealloc);
    Traits::copy(element, source);
};

// Elements without heap-owned members (integers, enumerations): start at 0
// and copy by assignment.
template <typename T>
struct PlainElementTraits {
    static DDS_Boolean initialize(T *element, const DDS_TypeAllocationParams_t *) noexcept {
        *element = T{};
        return DDS_BOOLEAN_TRUE;
    }
    static void finalize(T *, const DDS_TypeDeallocationParams_t *) noexcept {}
    static DDS_Boolean copy(T *destination, const T *source) noexcept {
        *destination = *source;
        return DDS_BOOLEAN_TRUE;
    }
};

// The name a report goes under, "<Sequence>_<operation>", formatted only
// when a report is actually raised.
class ReportContext {
public:
    constexpr ReportContext(const char *sequence, const char *operation) noexcept
        : sequence_(sequence), operation_(operation) {}
    // A name that is complete already.
    explicit constexpr ReportContext(const char *fullName) noexcept : sequence_(nullptr), operation_(fullName) {}

    class Text {
    public:
        explicit Text(const ReportContext &context) noexcept {
            if (context.sequence_ == nullptr) {
                std::snprintf(text_, sizeof text_, "%s", context.operation_);
            } else {
                std::snprintf(text_, sizeof text_, "%s_%s", context.sequence_, context.operation_);
            }
        }
        const char *c_str() const noexcept { return text_; }

    private:
        char text_[160];
    };

    void badParameter(const char *argument) const noexcept { OBLX_Report_badParameter(Text(*this).c_str(), argument); }
    void assertionFailure(const char *text) const noexcept { OBLX_Report_assertionFailure(Text(*this).c_str(), text); }
    void insufficientSpace(long long available, long long requested) const noexcept {
        OBLX_Report_insufficientSpace(Text(*this).c_str(), available, requested);
    }
    void allocationFailure(size_t bytes) const noexcept { OBLX_Report_allocationFailure(Text(*this).c_str(), bytes); }
    void sequenceNotOwner() const noexcept { OBLX_Report_sequenceNotOwner(Text(*this).c_str()); }
    void setFailure(const char *what) const noexcept { OBLX_Report_setFailure(Text(*this).c_str(), what); }
    void getFailure(const char *what) const noexcept { OBLX_Report_getFailure(Text(*this).c_str(), what); }
    void memoryAllocated(long long from, long long to) const noexcept {
        OBLX_Report_memoryAllocated(Text(*this).c_str(), from, to);
    }

private:
    const char *sequence_;
    const char *operation_;
};

// Every operation of one sequence type. `Record` is the C record declared
// by OBLX_SEQUENCE_DECLARE_RECORD; `Traits` gives the element functions and
// `Traits::sequenceName`, the C name that prefixes every report.
template <typename Record, typename Traits>
requires SequenceElementTraits<Traits, std::remove_pointer_t<decltype(Record::_contiguous_buffer)>>
class Sequence {
public:
    using Element = std::remove_pointer_t<decltype(Record::_contiguous_buffer)>;

    static DDS_Boolean initialize(Record *self) noexcept {
        if (self == nullptr) {
            context("initialize").badParameter("self");
            return DDS_BOOLEAN_FALSE;
        }
        setInitialState(*self);
        return DDS_BOOLEAN_TRUE;
    }

    static DDS_Boolean finalize(Record *self) noexcept { return setMaximum(self, 0); }

    static DDS_Long getMaximum(Record *self) noexcept { return checkedField(self, "get_maximum", &Record::_maximum); }

    static DDS_Long getLength(Record *self) noexcept { return checkedField(self, "get_length", &Record::_length); }

    static DDS_Boolean setLength(Record *self, DDS_Long newLength) noexcept {
        const ReportContext here = context("set_length");
        if (!prepare(self, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        if (newLength < 0 || static_cast<DDS_UnsignedLong>(newLength) > self->_maximum) {
            here.insufficientSpace(self->_maximum, newLength);
            return DDS_BOOLEAN_FALSE;
        }
        self->_length = static_cast<DDS_UnsignedLong>(newLength);
        return checkInvariants(*self, here);
    }

    static DDS_Boolean ensureLength(Record *self, DDS_Long length, DDS_Long max) noexcept {
        const ReportContext here = context("ensure_length");
        if (self == nullptr) {
            here.badParameter("self");
            return DDS_BOOLEAN_FALSE;
        }
        initializeIfNeeded(*self);
        if (length > max) {
            here.insufficientSpace(length, max);
            return DDS_BOOLEAN_FALSE;
        }
        const long long currentMaximum = self->_maximum;
        if (currentMaximum < length) {
            if (!self->_owned) {
                here.sequenceNotOwner();
                return DDS_BOOLEAN_FALSE;
            }
            here.memoryAllocated(currentMaximum, max);
            if (!setMaximum(self, max)) {
                here.insufficientSpace(currentMaximum, max);
                return DDS_BOOLEAN_FALSE;
            }
        }
        if (!setLength(self, length)) {
            here.setFailure("length");
            return DDS_BOOLEAN_FALSE;
        }
        return DDS_BOOLEAN_TRUE;
    }

    // Reallocates the owned buffer. Elements move by deep copy into freshly
    // initialized ones, so element types need no move semantics of their own.
    static DDS_Boolean setMaximum(Record *self, DDS_Long newMaximum) noexcept {
        const ReportContext here = context("set_maximum");
        if (!prepare(self, here) || !canReallocate(*self, newMaximum, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        if (static_cast<DDS_UnsignedLong>(newMaximum) == self->_maximum) {
            return DDS_BOOLEAN_TRUE;
        }
        const DDS_UnsignedLong kept = std::min(self->_length, static_cast<DDS_UnsignedLong>(newMaximum));
        if (kept > 0 && self->_contiguous_buffer == nullptr) {
            here.assertionFailure("inconsistent buffer state");
            return DDS_BOOLEAN_FALSE;
        }
        Element *newBuffer = nullptr;
        if (newMaximum > 0) {
            newBuffer = allocateElements(*self, static_cast<DDS_UnsignedLong>(newMaximum), here);
            if (newBuffer == nullptr) {
                return DDS_BOOLEAN_FALSE;
            }
        }
        for (DDS_UnsignedLong i = 0; i < kept; ++i) {
            Traits::copy(&newBuffer[i], &self->_contiguous_buffer[i]);
        }
        Element *oldBuffer = self->_contiguous_buffer;
        const DDS_UnsignedLong oldMaximum = self->_maximum;
        self->_contiguous_buffer = newBuffer;
        self->_maximum = static_cast<DDS_UnsignedLong>(newMaximum);
        self->_length = kept;
        releaseElements(*self, oldBuffer, oldMaximum);
        return checkInvariants(*self, here);
    }

    static Element get(Record *self, DDS_Long index) noexcept {
        if (self == nullptr) {
            context("get").badParameter("self");
            return Element{};
        }
        initializeIfNeeded(*self);
        if (!isValidIndex(*self, index)) {
            context("get").assertionFailure("index out of bounds");
            return hasBuffer(*self) && self->_maximum > 0 ? *elementAt(*self, 0) : Element{};
        }
        return *elementAt(*self, static_cast<DDS_UnsignedLong>(index));
    }

    static Element *getReference(Record *self, DDS_Long index) noexcept {
        if (self == nullptr) {
            context("get_reference").badParameter("self");
            return nullptr;
        }
        initializeIfNeeded(*self);
        if (!isValidIndex(*self, index)) {
            context("get_reference").assertionFailure("index out of bounds");
            return nullptr;
        }
        return elementAt(*self, static_cast<DDS_UnsignedLong>(index));
    }

    static DDS_Boolean copyNoAlloc(Record *self, const Record *source) noexcept {
        const ReportContext here = context("copy_no_alloc");
        if (!checkArguments(self, source, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        initializeIfNeeded(*self);
        if (!self->_owned && lengthOf(*source) > self->_maximum) {
            here.sequenceNotOwner();
            return DDS_BOOLEAN_FALSE;
        }
        if (!checkInvariants(*self, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        return copyElementsInto(*self, *source);
    }

    // Deep copy; grows `self` to the source's capacity (not just its
    // length) so that a later copy of the same source reuses the buffer.
    static Record *copy(Record *self, const Record *source) noexcept {
        const ReportContext here = context("copy");
        if (!checkArguments(self, source, here)) {
            return nullptr;
        }
        initializeIfNeeded(*self);
        if (!checkInvariants(*self, here)) {
            return nullptr;
        }
        if (lengthOf(*source) > self->_maximum && !setMaximum(self, static_cast<DDS_Long>(source->_maximum))) {
            return nullptr;
        }
        if (!copyNoAlloc(self, source) || !checkInvariants(*self, here)) {
            return nullptr;
        }
        return self;
    }

    static DDS_Boolean fromArray(Record *self, const Element *array, DDS_Long length) noexcept {
        const ReportContext here = context("from_array");
        Record borrowed = temporaryRecord();
        if (!loanContiguous(&borrowed, const_cast<Element *>(array), length, length)) {
            here.setFailure("loan contiguous array");
            return DDS_BOOLEAN_FALSE;
        }
        const bool copied = copy(self, &borrowed) != nullptr;
        return finishArrayTransfer(borrowed, copied, here);
    }

    // The array's elements must be valid destinations of Traits::copy.
    static DDS_Boolean toArray(Record *self, Element *array, DDS_Long length) noexcept {
        const ReportContext here = context("to_array");
        if (self == nullptr) {
            here.badParameter("self");
            return DDS_BOOLEAN_FALSE;
        }
        initializeIfNeeded(*self);
        Record borrowed = temporaryRecord();
        if (!loanContiguous(&borrowed, array, length, length)) {
            here.setFailure("loan contiguous array");
            return DDS_BOOLEAN_FALSE;
        }
        const bool copied = copyElementsInto(borrowed, *self);
        return finishArrayTransfer(borrowed, copied, here);
    }

    static DDS_Boolean loanContiguous(Record *self, Element *buffer, DDS_Long newLength, DDS_Long newMaximum) noexcept {
        const ReportContext here = context("loan_contiguous");
        if (!canLoan(self, buffer != nullptr, newLength, newMaximum, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        self->_contiguous_buffer = buffer;
        return takeLoan(*self, newLength, newMaximum, here);
    }

    static DDS_Boolean loanDiscontiguous(Record *self, Element **buffer, DDS_Long newLength,
                                         DDS_Long newMaximum) noexcept {
        const ReportContext here = context("loan_discontiguous");
        if (!canLoan(self, buffer != nullptr, newLength, newMaximum, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        self->_discontiguous_buffer = buffer;
        return takeLoan(*self, newLength, newMaximum, here);
    }

    static DDS_Boolean unloan(Record *self) noexcept {
        const ReportContext here = context("unloan");
        if (!prepare(self, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        if (self->_owned) {
            here.assertionFailure("buffer must be loaned");
            return DDS_BOOLEAN_FALSE;
        }
        self->_contiguous_buffer = nullptr;
        self->_discontiguous_buffer = nullptr;
        self->_maximum = 0;
        self->_length = 0;
        self->_owned = DDS_BOOLEAN_TRUE;
        return DDS_BOOLEAN_TRUE;  // an empty owned sequence: nothing left to check
    }

    static Element *getContiguousBuffer(Record *self) noexcept {
        return prepare(self, context("get_contiguous_bufferI")) ? self->_contiguous_buffer : nullptr;
    }

    static Element **getDiscontiguousBuffer(Record *self) noexcept {
        return prepare(self, context("get_discontiguous_bufferI")) ? self->_discontiguous_buffer : nullptr;
    }

    static DDS_Boolean hasOwnership(Record *self) noexcept {
        if (self == nullptr) {
            context("has_ownership").badParameter("self");
            return DDS_BOOLEAN_FALSE;
        }
        initializeIfNeeded(*self);
        return self->_owned;
    }

    static DDS_Boolean getElementPointersAllocation(const Record *self) noexcept {
        return self != nullptr && self->_elementAllocParams.allocate_pointers;
    }

    static DDS_Boolean setElementPointersAllocation(Record *self, DDS_Boolean allocatePointers) noexcept {
        if (self == nullptr) {
            return DDS_BOOLEAN_FALSE;
        }
        if (self->_maximum != 0) {
            context("set_element_pointers_allocation")
                .assertionFailure("Pointers allocation policy can be configured only when the maximum size of "
                                  "the sequence is 0");
            return DDS_BOOLEAN_FALSE;
        }
        self->_elementAllocParams.allocate_pointers = allocatePointers;
        self->_elementDeallocParams.delete_pointers = allocatePointers;
        return DDS_BOOLEAN_TRUE;
    }

    static DDS_Boolean setElementAllocationParams(Record *self, const DDS_TypeAllocationParams_t *params) noexcept {
        const ReportContext here = context("set_element_allocation_params");
        if (!checkParamsArguments(self, params, here)) {
            return DDS_BOOLEAN_FALSE;
        }
        if (self->_maximum != 0) {
            here.assertionFailure("Member allocation parameters can be configured only when the maximum size of the "
                                  "sequence is 0");
            return DDS_BOOLEAN_FALSE;
        }
        self->_elementAllocParams = *params;
        return DDS_BOOLEAN_TRUE;
    }

    static DDS_Boolean getElementAllocationParams(const Record *self, DDS_TypeAllocationParams_t *params) noexcept {
        if (!checkParamsArguments(self, params, context("get_element_allocation_params"))) {
            return DDS_BOOLEAN_FALSE;
        }
        *params = self->_elementAllocParams;
        return DDS_BOOLEAN_TRUE;
    }

    static DDS_Boolean setElementDeallocationParams(Record *self, const DDS_TypeDeallocationParams_t *params) noexcept {
        if (!checkParamsArguments(self, params, context("set_element_deallocation_params"))) {
            return DDS_BOOLEAN_FALSE;
        }
        self->_elementDeallocParams = *params;
        return DDS_BOOLEAN_TRUE;
    }

    // Reports under the setter's name, as the middleware's sequences do.
    static DDS_Boolean getElementDeallocationParams(const Record *self, DDS_TypeDeallocationParams_t *params) noexcept {
        if (!checkParamsArguments(self, params, context("set_element_deallocation_params"))) {
            return DDS_BOOLEAN_FALSE;
        }
        *params = self->_elementDeallocParams;
        return DDS_BOOLEAN_TRUE;
    }

    static void getReadToken(Record *self, void **token1, void **token2) noexcept {
        const ReportContext here = context("get_read_tokenI");
        if (self == nullptr) {
            here.badParameter("self");
            return;
        }
        initializeIfNeeded(*self);
        if (token1 == nullptr || token2 == nullptr) {
            here.getFailure("token (NULL)");
            return;
        }
        *token1 = self->_read_token1;
        *token2 = self->_read_token2;
    }

    static void setReadToken(Record *self, void *token1, void *token2) noexcept {
        if (self == nullptr) {
            context("set_read_tokenI").badParameter("self");
            return;
        }
        initializeIfNeeded(*self);
        self->_read_token1 = token1;
        self->_read_token2 = token2;
    }

    // Reports the first broken invariant and returns false.
    static DDS_Boolean checkInvariants(const Record *self, const char *fullContext) noexcept {
        const ReportContext here(fullContext);
        if (self == nullptr) {
            here.badParameter("self");
            return DDS_BOOLEAN_FALSE;
        }
        return checkInvariants(*self, here);
    }

private:
    static constexpr ReportContext context(const char *operation) noexcept {
        return ReportContext(Traits::sequenceName, operation);
    }

    static constexpr DDS_SeqElementTypeAllocationParams_t kDefaultAllocation = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
    static constexpr DDS_SeqElementTypeDeallocationParams_t kDefaultDeallocation = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;

    static void setInitialState(Record &self) noexcept {
        self._owned = DDS_BOOLEAN_TRUE;
        self._contiguous_buffer = nullptr;
        self._discontiguous_buffer = nullptr;
        self._maximum = 0;
        self._length = 0;
        self._sequence_init = DDS_SEQUENCE_MAGIC_NUMBER;
        self._read_token1 = nullptr;
        self._read_token2 = nullptr;
        self._elementAllocParams = kDefaultAllocation;
        self._elementDeallocParams = kDefaultDeallocation;
    }

    // A zero-filled or static record becomes a valid empty sequence on first use.
    static void initializeIfNeeded(Record &self) noexcept {
        if (self._sequence_init != DDS_SEQUENCE_MAGIC_NUMBER) {
            setInitialState(self);
        }
    }

    static Record temporaryRecord() noexcept {
        Record record;
        setInitialState(record);
        return record;
    }

    static DDS_Boolean checkInvariants(const Record &self, const ReportContext &here) noexcept {
        const char *broken = brokenInvariant(self);
        if (broken != nullptr) {
            here.assertionFailure(broken);
            return DDS_BOOLEAN_FALSE;
        }
        return DDS_BOOLEAN_TRUE;
    }

    static const char *brokenInvariant(const Record &self) noexcept {
        if (self._sequence_init != DDS_SEQUENCE_MAGIC_NUMBER) {
            return "invariant: uninitialized";
        }
        if (self._contiguous_buffer != nullptr && self._discontiguous_buffer != nullptr) {
            return "invariant: both buffers are non-NULL";
        }
        if (self._length > self._maximum) {
            return "invariant: length > maximum";
        }
        if (self._owned && self._discontiguous_buffer != nullptr) {
            return "invariant: sequence owns memory but has discontiguous buffer";
        }
        if (self._maximum > 0 && !hasBuffer(self)) {
            return "invariant: maximum > 0 but buffer is NULL";
        }
        return nullptr;
    }

    // The opening of most operations: a non-null, initialized, consistent sequence.
    static bool prepare(Record *self, const ReportContext &here) noexcept {
        if (self == nullptr) {
            here.badParameter("self");
            return false;
        }
        initializeIfNeeded(*self);
        return checkInvariants(*self, here);
    }

    // Getters report a broken invariant but still answer with the field.
    static DDS_Long checkedField(Record *self, const char *operation, DDS_UnsignedLong Record::*field) noexcept {
        if (self == nullptr) {
            context(operation).badParameter("self");
            return 0;
        }
        initializeIfNeeded(*self);
        checkInvariants(*self, context(operation));
        return static_cast<DDS_Long>(self->*field);
    }

    static bool checkArguments(Record *self, const Record *source, const ReportContext &here) noexcept {
        if (self == nullptr) {
            here.badParameter("self");
            return false;
        }
        if (source == nullptr) {
            here.badParameter("src");
            return false;
        }
        return true;
    }

    template <typename Params>
    static bool checkParamsArguments(const Record *self, const Params *params, const ReportContext &here) noexcept {
        if (self == nullptr) {
            here.badParameter("self");
            return false;
        }
        if (params == nullptr) {
            here.badParameter("params");
            return false;
        }
        return true;
    }

    static bool hasBuffer(const Record &self) noexcept {
        return self._contiguous_buffer != nullptr || self._discontiguous_buffer != nullptr;
    }

    static bool isValidIndex(const Record &self, DDS_Long index) noexcept {
        return index >= 0 && static_cast<DDS_UnsignedLong>(index) < self._length;
    }

    // A loaned pointer array takes precedence over the contiguous buffer.
    static Element *elementAt(const Record &self, DDS_UnsignedLong index) noexcept {
        return self._discontiguous_buffer != nullptr ? self._discontiguous_buffer[index]
                                                     : &self._contiguous_buffer[index];
    }

    // A source that was never initialized counts as empty.
    static DDS_UnsignedLong lengthOf(const Record &source) noexcept {
        return source._sequence_init == DDS_SEQUENCE_MAGIC_NUMBER ? source._length : 0;
    }

    static bool canReallocate(const Record &self, DDS_Long newMaximum, const ReportContext &here) noexcept {
        if (newMaximum < 0) {
            here.assertionFailure("max size must be positive");
            return false;
        }
        if (!self._owned) {
            here.assertionFailure("buffer must not be loaned");
            return false;
        }
        if (self._discontiguous_buffer != nullptr) {
            here.assertionFailure("discontiguous buffer is not NULL!");
            return false;
        }
        return true;
    }

    // Zeroed before initialization, so element functions that look at what
    // a member already points to find null.
    static Element *allocateElements(const Record &self, DDS_UnsignedLong count, const ReportContext &here) noexcept {
        auto *buffer = static_cast<Element *>(std::calloc(count, sizeof(Element)));
        if (buffer == nullptr) {
            here.allocationFailure(static_cast<size_t>(count) * sizeof(Element));
            return nullptr;
        }
        const DDS_TypeAllocationParams_t params = self._elementAllocParams;
        for (DDS_UnsignedLong i = 0; i < count; ++i) {
            Traits::initialize(&buffer[i], &params);
        }
        return buffer;
    }

    static void releaseElements(const Record &self, Element *buffer, DDS_UnsignedLong count) noexcept {
        if (buffer == nullptr) {
            return;
        }
        const DDS_TypeDeallocationParams_t params = self._elementDeallocParams;
        for (DDS_UnsignedLong i = 0; i < count; ++i) {
            Traits::finalize(&buffer[i], &params);
        }
        std::free(buffer);
    }

    // Copies every element of `source` into the existing buffer of `self`.
    static DDS_Boolean copyElementsInto(Record &self, const Record &source) noexcept {
        const DDS_UnsignedLong count = lengthOf(source);
        if (!setLength(&self, static_cast<DDS_Long>(count))) {
            context("copy_no_allocI").insufficientSpace(self._maximum, count);
            return DDS_BOOLEAN_FALSE;
        }
        for (DDS_UnsignedLong i = 0; i < count; ++i) {
            Traits::copy(elementAt(self, i), elementAt(source, i));
        }
        return checkInvariants(self, context("copy_no_allocI"));
    }

    static bool canLoan(Record *self, bool hasBufferArgument, DDS_Long newLength, DDS_Long newMaximum,
                        const ReportContext &here) noexcept {
        if (!prepare(self, here)) {
            return false;
        }
        if (self->_maximum != 0) {
            here.assertionFailure("max size must be 0");
            return false;
        }
        if (newLength < 0 || newMaximum < 0) {
            here.assertionFailure("negative argument");
            return false;
        }
        if (newLength > newMaximum) {
            here.insufficientSpace(newMaximum, newLength);
            return false;
        }
        if (newMaximum >= 1 && !hasBufferArgument) {
            here.assertionFailure("NULL buffer can't have non-zero maximum");
            return false;
        }
        return true;
    }

    // canLoan checked the sequence and the arguments (a reader loans every
    // sample it takes): the one invariant a loan can still break is a
    // buffer of the other kind left in the sequence.
    static DDS_Boolean takeLoan(Record &self, DDS_Long newLength, DDS_Long newMaximum,
                                const ReportContext &here) noexcept {
        self._length = static_cast<DDS_UnsignedLong>(newLength);
        self._maximum = static_cast<DDS_UnsignedLong>(newMaximum);
        self._owned = DDS_BOOLEAN_FALSE;
        if (self._contiguous_buffer != nullptr && self._discontiguous_buffer != nullptr) {
            here.assertionFailure("invariant: both buffers are non-NULL");
            return DDS_BOOLEAN_FALSE;
        }
        return DDS_BOOLEAN_TRUE;
    }

    // The end of from_array and to_array: the temporary gives its loan back.
    static DDS_Boolean finishArrayTransfer(Record &borrowed, bool copied, const ReportContext &here) noexcept {
        if (!copied) {
            here.setFailure("copying array sequence");
            return DDS_BOOLEAN_FALSE;
        }
        if (!unloan(&borrowed)) {
            here.setFailure("unloan contiguous array");
        }
        return DDS_BOOLEAN_TRUE;
    }
};

}  // namespace vexar::types

// Emits the C functions of `Seq` (elements `T`) over
// vexar::types::Sequence, with `Traits` giving the element functions.
// Use once per sequence, at namespace scope of a .cpp file.
#define OBLX_SEQUENCE_DEFINE(Seq, T, Traits)                                                                         \
    namespace {                                                                                                      \
    struct Seq##_Traits : Traits {                                                                                   \
        static constexpr const char *sequenceName = #Seq;                                                            \
    };                                                                                                               \
    using Seq##_Impl = ::vexar::types::Sequence<Seq, Seq##_Traits>;                                                  \
    static_assert(std::is_same_v<Seq##_Impl::Element, T>, "element type of " #Seq);                                  \
    }                                                                                                                \
    extern "C" {                                                                                                     \
    DDS_Boolean Seq##_initialize(Seq *self) { return Seq##_Impl::initialize(self); }                                 \
    DDS_Boolean Seq##_finalize(Seq *self) { return Seq##_Impl::finalize(self); }                                     \
    DDS_Long Seq##_get_maximum(Seq *self) { return Seq##_Impl::getMaximum(self); }                                   \
    DDS_Long Seq##_get_length(Seq *self) { return Seq##_Impl::getLength(self); }                                     \
    DDS_Boolean Seq##_set_length(Seq *self, DDS_Long new_length) { return Seq##_Impl::setLength(self, new_length); } \
    DDS_Boolean Seq##_ensure_length(Seq *self, DDS_Long length, DDS_Long max) {                                      \
        return Seq##_Impl::ensureLength(self, length, max);                                                          \
    }                                                                                                                \
    DDS_Boolean Seq##_set_maximum(Seq *self, DDS_Long new_max) { return Seq##_Impl::setMaximum(self, new_max); }     \
    T Seq##_get(Seq *self, DDS_Long index) { return Seq##_Impl::get(self, index); }                                  \
    T *Seq##_get_reference(Seq *self, DDS_Long index) { return Seq##_Impl::getReference(self, index); }              \
    DDS_Boolean Seq##_copy_no_alloc(Seq *self, const Seq *src) { return Seq##_Impl::copyNoAlloc(self, src); }        \
    Seq *Seq##_copy(Seq *self, const Seq *src) { return Seq##_Impl::copy(self, src); }                               \
    DDS_Boolean Seq##_from_array(Seq *self, T const *array, DDS_Long length) {                                       \
        return Seq##_Impl::fromArray(self, array, length);                                                           \
    }                                                                                                                \
    DDS_Boolean Seq##_to_array(Seq *self, T *array, DDS_Long length) {                                               \
        return Seq##_Impl::toArray(self, array, length);                                                             \
    }                                                                                                                \
    DDS_Boolean Seq##_loan_contiguous(Seq *self, T *buffer, DDS_Long new_length, DDS_Long new_max) {                 \
        return Seq##_Impl::loanContiguous(self, buffer, new_length, new_max);                                        \
    }                                                                                                                \
    DDS_Boolean Seq##_loan_discontiguous(Seq *self, T **buffer, DDS_Long new_length, DDS_Long new_max) {             \
        return Seq##_Impl::loanDiscontiguous(self, buffer, new_length, new_max);                                     \
    }                                                                                                                \
    DDS_Boolean Seq##_unloan(Seq *self) { return Seq##_Impl::unloan(self); }                                         \
    T *Seq##_get_contiguous_buffer(Seq *self) { return Seq##_Impl::getContiguousBuffer(self); }                      \
    T *Seq##_get_contiguous_bufferI(Seq *self) { return Seq##_Impl::getContiguousBuffer(self); }                     \
    T **Seq##_get_discontiguous_buffer(Seq *self) { return Seq##_Impl::getDiscontiguousBuffer(self); }               \
    T **Seq##_get_discontiguous_bufferI(Seq *self) { return Seq##_Impl::getDiscontiguousBuffer(self); }              \
    DDS_Boolean Seq##_has_ownership(Seq *self) { return Seq##_Impl::hasOwnership(self); }                            \
    DDS_Boolean Seq##_get_element_pointers_allocation(const Seq *self) {                                             \
        return Seq##_Impl::getElementPointersAllocation(self);                                                       \
    }                                                                                                                \
    DDS_Boolean Seq##_set_element_pointers_allocation(Seq *self, DDS_Boolean allocate_pointers) {                    \
        return Seq##_Impl::setElementPointersAllocation(self, allocate_pointers);                                    \
    }                                                                                                                \
    DDS_Boolean Seq##_set_element_allocation_params(Seq *self, const DDS_TypeAllocationParams_t *params) {           \
        return Seq##_Impl::setElementAllocationParams(self, params);                                                 \
    }                                                                                                                \
    DDS_Boolean Seq##_get_element_allocation_params(const Seq *self, DDS_TypeAllocationParams_t *params) {           \
        return Seq##_Impl::getElementAllocationParams(self, params);                                                 \
    }                                                                                                                \
    DDS_Boolean Seq##_set_element_deallocation_params(Seq *self, const DDS_TypeDeallocationParams_t *params) {       \
        return Seq##_Impl::setElementDeallocationParams(self, params);                                               \
    }                                                                                                                \
    DDS_Boolean Seq##_get_element_deallocation_params(const Seq *self, DDS_TypeDeallocationParams_t *params) {       \
        return Seq##_Impl::getElementDeallocationParams(self, params);                                               \
    }                                                                                                                \
    void Seq##_get_read_tokenI(Seq *self, void **token1, void **token2) {                                            \
        Seq##_Impl::getReadToken(self, token1, token2);                                                              \
    }                                                                                                                \
    void Seq##_set_read_tokenI(Seq *self, void *token1, void *token2) {                                              \
        Seq##_Impl::setReadToken(self, token1, token2);                                                              \
    }                                                                                                                \
    DDS_Boolean Seq##_check_invariantsI(const Seq *self, const char *context) {                                      \
        return Seq##_Impl::checkInvariants(self, context);                                                           \
    }                                                                                                                \
    }                                                                                                                \
    static_assert(true, "a semicolon follows the macro")
