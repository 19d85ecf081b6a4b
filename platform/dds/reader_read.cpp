// Untyped read and take on Cyclone, with loans and with copies.
//
// On loan: the reader lends samples of its own, an array of initialized
// samples kept from loan to loan, which Cyclone fills as it fills an
// application's buffer (decoding into each). So nothing of Cyclone's is
// lent or returned, and a take needs no count first: it takes in rounds
// until one comes back short, doubling the room after a full one. A read
// cannot go in rounds (the second would read the first's samples again), so
// it counts the cache with dds_reader_lock_samples, which leaves the cache
// locked for the read that follows (DDS_READ_WITHOUT_LOCK); the room is
// made in between, and if it cannot be, the read is cut to what fits.
//
// Every loaned sample holds its type's full bounds (a log message about
// 4.6 KB), so a loan never exceeds OBLX_DATAREADER_MAX_LOANED_SAMPLES: an
// unlimited take under a steady stream would otherwise keep doubling while
// data arrives. A returned loan that grew for a burst shrinks back once a
// later take needed far less, so one burst does not stay resident.
//
// Lock order: counting takes Cyclone's reader lock, then its cache lock, and
// no read into our buffers takes the reader lock again; the reader's loan
// mutex serializes the loaned reads and every other operation of ours that
// takes the two Cyclone locks (creating and deleting read conditions).
//
// With copies: the caller's initialized elements are the buffer; Cyclone
// decodes each sample straight into one, at most the sequence's maximum.
//
// The next instance: Cyclone has no such read, and any read marks what it
// returns READ, so the instances are not found by reading. The type's
// sertype lists the instances that the domain holds, by handle
// (platform/dds/instance_index.hpp); the instances after the given handle
// are read one by one, in that order, until one has samples that the
// selection matches. An instance of another reader (Cyclone: "precondition
// not met") or without such samples is passed over, unchanged.
#include "platform/dds/entity.hpp"

#include <algorithm>

#include <dds/ddsc/dds_internal_api.h>

#include "platform/dds/cyclone_sertype.hpp"
#include "platform/dds/sample_states.hpp"

namespace vexar::dds {
namespace {

// What to read: from the reader or one of its conditions, all instances or
// one, in which states (a condition's own), read or take.
struct Selection {
    dds_entity_t source;
    dds_instance_handle_t instance;
    std::uint32_t states;
    bool take;
};

// The caller's data sequence and where the results go.
struct Destination {
    DDS_Boolean *isLoan;
    void ***received;
    DDS_Long *count;
    DDS_SampleInfoSeq *infos;
    DDS_Long maximum;
    bool owned;
    void *buffer;
    DDS_Long elementSize;
};

// Only the forms with a state mask: they are the ones that honour the
// buffer size with DDS_READ_WITHOUT_LOCK (the others assume 100 and would
// fail with the cache still locked).
dds_return_t readOrTake(const Selection &selection, void **samples, dds_sample_info_t *infos, size_t capacity,
                        std::uint32_t count) noexcept {
    const dds_entity_t from = selection.source;
    const dds_instance_handle_t instance = selection.instance;
    const std::uint32_t states = selection.states;
    if (instance == DDS_HANDLE_NIL) {
        return selection.take ? dds_take_mask(from, samples, infos, capacity, count, states)
                              : dds_read_mask(from, samples, infos, capacity, count, states);
    }
    return selection.take ? dds_take_instance_mask(from, samples, infos, capacity, count, instance, states)
                          : dds_read_instance_mask(from, samples, infos, capacity, count, instance, states);
}

DDS_ReturnCode_t noData(const Destination &out) noexcept {
    *out.count = 0;
    DDS_SampleInfoSeq_set_length(out.infos, 0);
    return DDS_RETCODE_NO_DATA;
}

DDS_ReturnCode_t failed(dds_return_t result, const char *context) noexcept {
    // An unknown instance is the caller's mistake, not a failure of the reader.
    if (result == -DDS_RETCODE_PRECONDITION_NOT_MET) return DDS_RETCODE_PRECONDITION_NOT_MET;
    return reportCycloneFailure(context, "read or take", result);
}

constexpr std::uint32_t kFirstRoom = 8;
// An idle loan keeps at least this room, and twice what its last take held.
constexpr std::uint32_t kKeptRoom = 64;
constexpr dds_return_t kNoMemory = -DDS_RETCODE_OUT_OF_RESOURCES;  // as Cyclone reports it

// Grows the loan to `count` samples (never shrinks it); false when memory
// ran out, the loan then as it was.
bool growLoan(ReaderLoan &loan, std::uint32_t count) noexcept {
    if (count <= loan.capacity()) return true;
    try {
        loan.infos.resize(count);
        loan.cycloneInfos.resize(count);
        loan.samples.reserve(count);
    } catch (...) {
        return false;
    }
    void *base = types::sample::array::resize(loan.type, loan.base, count);
    if (base == nullptr) return false;
    loan.base = base;
    loan.samples.resize(count);
    types::sample::array::listElements(loan.type, base, count, loan.samples.data());
    return true;
}

// Gives back the room of a burst once a take needed a quarter of it or
// less: the array, the pointers and both info arrays keep twice that take.
void shrinkAfterBurst(ReaderLoan &loan) noexcept {
    const std::uint32_t kept = std::max(kKeptRoom, 2 * static_cast<std::uint32_t>(loan.count));
    if (loan.capacity() < 2 * kept) return;
    loan.base = types::sample::array::resize(loan.type, loan.base, kept);  // in place if realloc failed
    loan.samples.resize(kept);
    loan.infos.resize(kept);
    loan.cycloneInfos.resize(kept);
    try {
        loan.samples.shrink_to_fit();
        loan.infos.shrink_to_fit();
        loan.cycloneInfos.shrink_to_fit();
    } catch (...) {
        // kept at their old size: correct, only larger
    }
    types::sample::array::listElements(loan.type, loan.base, kept, loan.samples.data());
}

// A returned loan when there is one, else a new empty one.
std::unique_ptr<ReaderLoan> prepareLoan(DDS_DataReaderImpl &reader) {
    if (reader.idleLoans.empty()) return std::make_unique<ReaderLoan>(*reader.description.type.plugin.type_code);
    std::unique_ptr<ReaderLoan> loan = std::move(reader.idleLoans.back());
    reader.idleLoans.pop_back();
    return loan;
}

// Cyclone's infos, converted in place over the loan's DDS_SampleInfo array.
void convertInfos(ReaderLoan &loan) noexcept {
    for (std::int32_t i = 0; i < loan.count; ++i) {
        loan.infos[static_cast<size_t>(i)] = fromCyclone(loan.cycloneInfos[static_cast<size_t>(i)]);
    }
}

// Keeps a loan that goes back unused, or comes back, for the next take
// (a reader taking from one thread needs one); returns `result`.
DDS_ReturnCode_t idle(DDS_DataReaderImpl &reader, std::unique_ptr<ReaderLoan> loan, DDS_ReturnCode_t result) noexcept {
    constexpr size_t kIdleLoansKept = 2;
    if (reader.idleLoans.size() < kIdleLoansKept) {
        try {
            shrinkAfterBurst(*loan);
            loan->count = 0;
            reader.idleLoans.push_back(std::move(loan));
        } catch (...) {
            // dropped: the next take makes a new one
        }
    }
    return result;
}

DDS_ReturnCode_t lend(DDS_DataReaderImpl &reader, std::unique_ptr<ReaderLoan> loan, const Destination &out,
                      const char *context) {
    if (!DDS_SampleInfoSeq_loan_contiguous(out.infos, loan->infos.data(), loan->count, loan->count)) {
        OBLX_Report_failure(context, "cannot loan the sample infos");
        return idle(reader, std::move(loan), DDS_RETCODE_ERROR);
    }
    *out.received = loan->samples.data();
    *out.count = loan->count;
    *out.isLoan = DDS_BOOLEAN_TRUE;
    reader.loans.push_back(std::move(loan));
    return DDS_RETCODE_OK;
}

std::uint32_t doubled(std::uint32_t room, std::uint32_t limit) noexcept { return room > limit / 2 ? limit : 2 * room; }

// Takes round after round into the loan; the count taken, or a failure when
// nothing could be taken.
dds_return_t takeInRounds(ReaderLoan &loan, const Selection &selection, std::uint32_t limit) noexcept {
    std::uint32_t taken = 0;
    std::uint32_t room = std::min(limit, std::max(loan.capacity(), kFirstRoom));
    for (;;) {
        if (!growLoan(loan, room)) {
            if (taken == loan.capacity()) return taken > 0 ? static_cast<dds_return_t>(taken) : kNoMemory;
            room = loan.capacity();
        }
        const std::uint32_t wanted = room - taken;
        dds_return_t result = readOrTake(selection, &loan.samples[taken], &loan.cycloneInfos[taken], wanted, wanted);
        if (result < 0) return taken > 0 ? static_cast<dds_return_t>(taken) : result;
        taken += static_cast<std::uint32_t>(result);
        if (taken < room || taken == limit) return static_cast<dds_return_t>(taken);
        room = doubled(room, limit);
    }
}

// Counts, then reads what was counted (at most `limit`, and for one
// instance at most what an instance holds). Counting leaves the cache locked
// until the read, which must therefore run: some room is made before
// counting, and the read is cut to the room there is.
dds_return_t readCounted(ReaderLoan &loan, const DDS_DataReaderImpl &reader, const Selection &selection,
                         std::uint32_t limit) noexcept {
    if (selection.instance != DDS_HANDLE_NIL) limit = std::min(limit, reader.samplesPerInstance);
    if (!growLoan(loan, std::min(limit, std::max(loan.capacity(), kFirstRoom)))) return kNoMemory;
    std::uint32_t count = std::min(dds_reader_lock_samples(reader.handle), limit);
    if (count == 0) return 0;  // not locked when empty
    if (!growLoan(loan, count)) count = loan.capacity();
    return readOrTake(selection, loan.samples.data(), loan.cycloneInfos.data(), count, DDS_READ_WITHOUT_LOCK);
}

DDS_ReturnCode_t readOnLoan(DDS_DataReaderImpl &reader, const Selection &selection, DDS_Long maxSamples,
                            const Destination &out, const char *context) {
    std::lock_guard lock(reader.loanMutex);
    reader.loans.reserve(reader.loans.size() + 1);  // lend() must not fail once samples are out
    std::unique_ptr<ReaderLoan> loan = prepareLoan(reader);
    constexpr auto kCeiling = static_cast<std::uint32_t>(OBLX_DATAREADER_MAX_LOANED_SAMPLES);
    const std::uint32_t limit =
        maxSamples == DDS_LENGTH_UNLIMITED ? kCeiling : std::min(kCeiling, static_cast<std::uint32_t>(maxSamples));
    dds_return_t result =
        selection.take ? takeInRounds(*loan, selection, limit) : readCounted(*loan, reader, selection, limit);
    if (result <= 0) return idle(reader, std::move(loan), result < 0 ? failed(result, context) : noData(out));
    loan->count = result;
    convertInfos(*loan);
    return lend(reader, std::move(loan), out, context);
}

DDS_ReturnCode_t readCopies(const Selection &selection, DDS_Long maxSamples, const Destination &out,
                            const char *context) {
    auto count = static_cast<std::uint32_t>(maxSamples == DDS_LENGTH_UNLIMITED ? out.maximum
                                                                               : std::min(maxSamples, out.maximum));
    std::vector<void *> samples(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        samples[i] = static_cast<char *>(out.buffer) + static_cast<size_t>(i) * static_cast<size_t>(out.elementSize);
    }
    std::vector<dds_sample_info_t> cycloneInfos(count);
    dds_return_t result = readOrTake(selection, samples.data(), cycloneInfos.data(), count, count);
    if (result < 0) return failed(result, context);
    if (result == 0) return noData(out);
    if (!DDS_SampleInfoSeq_ensure_length(out.infos, result, static_cast<DDS_Long>(count))) {
        OBLX_Report_failure(context, "cannot hold the sample infos");
        return DDS_RETCODE_OUT_OF_RESOURCES;
    }
    for (dds_return_t i = 0; i < result; ++i)
        *DDS_SampleInfoSeq_get_reference(out.infos, i) = fromCyclone(cycloneInfos[i]);
    *out.received = nullptr;
    *out.count = result;
    *out.isLoan = DDS_BOOLEAN_FALSE;
    return DDS_RETCODE_OK;
}

// The checks that every form shares; on success `lend` says whether the
// samples go on loan.
DDS_ReturnCode_t checkDestination(DDS_DataReaderImpl *reader, const Destination &out, DDS_Long maxSamples, bool &lend,
                                  const char *context) noexcept {
    if (checked(reader, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    const char *missing = out.isLoan == nullptr     ? "is_loan"
                          : out.received == nullptr ? "received_data"
                          : out.count == nullptr    ? "data_count"
                          : out.infos == nullptr    ? "info_seq"
                                                    : nullptr;
    if (missing == nullptr && (maxSamples == 0 || maxSamples < DDS_LENGTH_UNLIMITED)) missing = "max_samples";
    if (missing == nullptr && out.maximum < 0) missing = "data_seq_max_len";
    if (missing != nullptr) {
        OBLX_Report_badParameter(context, missing);
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (!out.owned || !DDS_SampleInfoSeq_has_ownership(out.infos)) {
        OBLX_Report_sequenceNotOwner(context);
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    lend = out.maximum == 0;
    if (lend && (!*out.isLoan || DDS_SampleInfoSeq_get_maximum(out.infos) != 0)) {
        OBLX_Report_failure(context, "an empty sequence needs a loan and an empty info sequence");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    if (!lend && (out.buffer == nullptr || out.elementSize <= 0)) {
        OBLX_Report_badParameter(context, out.buffer == nullptr ? "data_seq_contiguous_buffer" : "data_size");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t readSelected(DDS_DataReaderImpl &reader, const Selection &selection, DDS_Long maxSamples,
                              const Destination &out, bool lend, const char *context) {
    return lend ? readOnLoan(reader, selection, maxSamples, out, context)
                : readCopies(selection, maxSamples, out, context);
}

// What `selection` selects of the instances after `previous`: those of the
// first one of which it selects anything.
DDS_ReturnCode_t readNextInstance(DDS_DataReaderImpl &reader, Selection selection, DDS_InstanceHandle_t previous,
                                  DDS_Long maxSamples, const Destination &out, bool lend, const char *context) {
    const ddsi_sertype *type = reader.description.sertype;
    for (selection.instance = nextInstance(type, reader.handle, previous); selection.instance != DDS_HANDLE_NIL;
         selection.instance = nextInstance(type, reader.handle, selection.instance)) {
        DDS_ReturnCode_t result = readSelected(reader, selection, maxSamples, out, lend, context);
        if (result != DDS_RETCODE_NO_DATA && result != DDS_RETCODE_PRECONDITION_NOT_MET) return result;
    }
    return noData(out);
}

// `next` reads the instance after `selection.instance` that has selected
// samples, instead of that instance.
DDS_ReturnCode_t readOrTakeInto(DDS_DataReaderImpl *reader, const std::optional<Selection> &selection,
                                DDS_Long maxSamples, const Destination &out, const char *context, bool next = false) {
    bool lend = false;
    DDS_ReturnCode_t checkedResult = checkDestination(reader, out, maxSamples, lend, context);
    if (checkedResult != DDS_RETCODE_OK) return checkedResult;
    if (!selection) return noData(out);  // the state masks select nothing
    if (next) return readNextInstance(*reader, *selection, selection->instance, maxSamples, out, lend, context);
    return readSelected(*reader, *selection, maxSamples, out, lend, context);
}

// The selection of the state-mask forms; empty when the masks select nothing.
std::optional<Selection> byStates(const DDS_DataReaderImpl *reader, dds_instance_handle_t instance,
                                  DDS_SampleStateMask sampleStates, DDS_ViewStateMask viewStates,
                                  DDS_InstanceStateMask instanceStates, DDS_Boolean take) noexcept {
    std::optional<std::uint32_t> states = toCycloneStates(sampleStates, viewStates, instanceStates);
    if (!states || reader == nullptr) return std::nullopt;
    return Selection{reader->handle, instance, *states, take != DDS_BOOLEAN_FALSE};
}

DDS_ReadConditionImpl *conditionOf(DDS_DataReaderImpl *reader, DDS_ReadCondition *condition,
                                   const char *context) noexcept {
    if (checked(condition, context, "condition") == nullptr) return nullptr;
    if (reader != nullptr && &condition->reader != reader) {
        reportBadEntity(context, "condition (of another reader)");
        return nullptr;
    }
    return condition;
}

// Which instance: every one (DDS_HANDLE_NIL), the one given, or the next
// after the one given.
struct Instance {
    dds_instance_handle_t handle;
    bool next;
};

DDS_ReturnCode_t readByStates(DDS_DataReaderImpl *self, const Destination &out, DDS_Long maxSamples, Instance instance,
                              DDS_SampleStateMask sampleStates, DDS_ViewStateMask viewStates,
                              DDS_InstanceStateMask instanceStates, DDS_Boolean take, const char *context) noexcept {
    std::optional<Selection> selection =
        byStates(self, instance.handle, sampleStates, viewStates, instanceStates, take);
    return guarded(context, DDS_RETCODE_ERROR,
                   [&] { return readOrTakeInto(self, selection, maxSamples, out, context, instance.next); });
}

DDS_ReturnCode_t readByCondition(DDS_DataReaderImpl *self, const Destination &out, DDS_Long maxSamples,
                                 Instance instance, DDS_ReadCondition *condition, DDS_Boolean take,
                                 const char *context) noexcept {
    DDS_ReadConditionImpl *checkedCondition = conditionOf(self, condition, context);
    if (checkedCondition == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    std::optional<Selection> selection =
        Selection{checkedCondition->handle, instance.handle, checkedCondition->states, take != DDS_BOOLEAN_FALSE};
    return guarded(context, DDS_RETCODE_ERROR,
                   [&] { return readOrTakeInto(self, selection, maxSamples, out, context, instance.next); });
}

bool hasInstance(dds_instance_handle_t handle, const char *context) noexcept {
    if (handle == DDS_HANDLE_NIL) OBLX_Report_badParameter(context, "handle");
    return handle != DDS_HANDLE_NIL;
}

DDS_ReturnCode_t returnLoan(DDS_DataReaderImpl &reader, void **samples, DDS_SampleInfoSeq *infos, const char *context) {
    std::unique_ptr<ReaderLoan> loan;
    {
        std::lock_guard lock(reader.loanMutex);
        auto found = std::find_if(reader.loans.begin(), reader.loans.end(),
                                  [samples](const auto &candidate) { return candidate->samples.data() == samples; });
        if (found == reader.loans.end()) {
            OBLX_Report_failure(context, "not a loan of this reader");
            return DDS_RETCODE_PRECONDITION_NOT_MET;
        }
        loan = std::move(*found);
        reader.loans.erase(found);
        if (infos != nullptr && DDS_SampleInfoSeq_get_contiguous_bufferI(infos) == loan->infos.data()) {
            DDS_SampleInfoSeq_unloan(infos);
        }
        idle(reader, std::move(loan), DDS_RETCODE_OK);
    }
    return DDS_RETCODE_OK;
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

#define VEXAR_DESTINATION                                                                                            \
    Destination {                                                                                                    \
        is_loan, received_data, data_count, info_seq, data_seq_max_len, data_seq_has_ownership != DDS_BOOLEAN_FALSE, \
            data_seq_contiguous_buffer, data_size                                                                    \
    }

extern "C" {

DDS_ReturnCode_t DDS_DataReader_read_or_take_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                      DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                      DDS_InstanceStateMask instance_states, DDS_Boolean take) {
    (void)data_seq_len;
    return readByStates(self, VEXAR_DESTINATION, max_samples, {DDS_HANDLE_NIL, false}, sample_states, view_states,
                        instance_states, take, "DDS_DataReader_read_or_take_untypedI");
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                                  DDS_ReadCondition *condition, DDS_Boolean take) {
    (void)data_seq_len;
    return readByCondition(self, VEXAR_DESTINATION, max_samples, {DDS_HANDLE_NIL, false}, condition, take,
                           "DDS_DataReader_read_or_take_w_condition_untypedI");
}

DDS_ReturnCode_t
DDS_DataReader_read_or_take_instance_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t handle,
                                              DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                              DDS_InstanceStateMask instance_states, DDS_Boolean take) {
    const char *context = "DDS_DataReader_read_or_take_instance_untypedI";
    (void)data_seq_len;
    if (!hasInstance(handle, context)) return DDS_RETCODE_BAD_PARAMETER;
    return readByStates(self, VEXAR_DESTINATION, max_samples, {handle, false}, sample_states, view_states,
                        instance_states, take, context);
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_instance_w_condition_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                                           DDS_InstanceHandle_t handle,
                                                                           DDS_ReadCondition *condition,
                                                                           DDS_Boolean take) {
    const char *context = "DDS_DataReader_read_or_take_instance_w_condition_untypedI";
    (void)data_seq_len;
    if (!hasInstance(handle, context)) return DDS_RETCODE_BAD_PARAMETER;
    return readByCondition(self, VEXAR_DESTINATION, max_samples, {handle, false}, condition, take, context);
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_next_instance_untypedI(
    OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t previous_handle, DDS_SampleStateMask sample_states,
    DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states, DDS_Boolean take) {
    (void)data_seq_len;
    return readByStates(self, VEXAR_DESTINATION, max_samples, {previous_handle, true}, sample_states, view_states,
                        instance_states, take, "DDS_DataReader_read_or_take_next_instance_untypedI");
}

DDS_ReturnCode_t
DDS_DataReader_read_or_take_next_instance_w_condition_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                               DDS_InstanceHandle_t previous_handle,
                                                               DDS_ReadCondition *condition, DDS_Boolean take) {
    (void)data_seq_len;
    return readByCondition(self, VEXAR_DESTINATION, max_samples, {previous_handle, true}, condition, take,
                           "DDS_DataReader_read_or_take_next_instance_w_condition_untypedI");
}

DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader *self, void **received_data, DDS_Long,
                                                     DDS_SampleInfoSeq *info_seq) {
    const char *context = "DDS_DataReader_return_loan_untypedI";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    if (received_data == nullptr) {
        OBLX_Report_badParameter(context, "received_data");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return returnLoan(*self, received_data, info_seq, context); });
}

}  // extern "C"
