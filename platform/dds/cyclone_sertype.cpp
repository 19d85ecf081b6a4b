// Cyclone's sertype and serdata over a type plugin.
//
// A serdata holds the sample's wire bytes (encapsulation header included,
// padded with zeros to a multiple of 4) and its canonical key: the key form
// serialized big-endian without header (the key hash is derived from it on
// demand). Equal keys have equal key bytes, so eqkey compares them and hash
// is their murmur3.
// Unkeyed types have empty key bytes: all their samples are one instance.
// Every serdata names its sertype's instance index, and keys compare equal
// only within one: Cyclone's key-to-handle map is shared by every type of a
// domain, and the key copies it keeps are what the index lists (see
// platform/dds/instance_index.hpp).
// The plugin's functions are called without endpoint data, so one sertype
// serves every endpoint and every thread at once. Received bytes are checked
// by the plan compiled from the plugin's type code, which is what the
// plugin's own functions run.
#include "platform/dds/cyclone_sertype.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/cdr/encoding.hpp"
#include "platform/dds/cyclone.hpp"
#include "platform/dds/instance_index.hpp"
#include "platform/types/enumeration_check.hpp"
#include "platform/log/report.h"
#include "platform/types/sample_array.hpp"
#include "platform/types/sample_printer.hpp"
#include "platform/plugin/type_plugin.hpp"

#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <dds/ddsi/q_radmin.h>
#include <dds/ddsrt/mh3.h>

namespace vexar::dds {
namespace {

// A mutable type writes this as PL_CDR little-endian, a plain one as CDR.
constexpr DDS_UnsignedShort kWireEncapsulation = OBLX_CDR_ENCAPSULATION_CDR_LE;

// Initialized samples that the key members of incoming bytes are read into
// when the key holds strings or sequences.
// Receive threads run concurrently, so each takes a sample of its own; the
// samples are kept for the next check rather than made per sample.
class ScratchPool {
public:
    explicit ScratchPool(const DDS_TypeCode &type) noexcept : type_(type) {}
    ~ScratchPool() {
        for (void *sample : idle_) types::sample::array::destroy(type_, sample);
    }
    ScratchPool(const ScratchPool &) = delete;
    ScratchPool &operator=(const ScratchPool &) = delete;

    // Null when out of memory.
    void *acquire() noexcept {
        {
            std::lock_guard lock(mutex_);
            if (!idle_.empty()) {
                void *sample = idle_.back();
                idle_.pop_back();
                return sample;
            }
        }
        return types::sample::array::resize(type_, nullptr, 1);
    }

    void release(void *sample) noexcept {
        std::lock_guard lock(mutex_);
        try {
            idle_.push_back(sample);
        } catch (...) {
            types::sample::array::destroy(type_, sample);
        }
    }

private:
    const DDS_TypeCode &type_;
    std::mutex mutex_;
    std::vector<void *> idle_;
};

struct Sertype {
    ddsi_sertype base;  // first: Cyclone hands back &base
    OBLX_TypePlugin plugin;
    bool keyed;
    bool keyHashIsDigest;         // the key hash is an MD5 digest, not the key bytes
    DDS_UnsignedLong keyMaxSize;  // key form, without header
    DDS_UnsignedLong keyWireMaxSize;
    DDS_UnsignedLong wireMaxSize;  // a whole sample with header; OBLX_TYPEPLUGIN_MAX_SIZE_OVERFLOW when unbounded
    ScratchPool *scratch;          // owned; outside the struct to keep its layout standard
    types::EnumerationCheck *enumerations;  // owned, likewise
    plugin::TypePlan *plan;                 // owned, likewise: the plugin's encoding, compiled from its type code
    bool keyHoldsBuffers;                   // a key member is (or holds) a string or a sequence
    InstanceIndex *instances;               // one reference, shared with the key copies of its serdata
};
static_assert(std::is_standard_layout_v<Sertype>);

// Frees the record and the parts it owns; a part that was never made is null.
void destroyParts(Sertype *type) noexcept {
    if (type->instances != nullptr) type->instances->release();
    delete type->scratch;
    delete type->enumerations;
    delete type->plan;
    delete type;
}
static_assert(std::has_unique_object_representations_v<OBLX_TypePlugin>, "plugins are compared bytewise");

const Sertype &sertypeOf(const ddsi_sertype *type) noexcept { return *reinterpret_cast<const Sertype *>(type); }

// The wire bytes follow the record, then the key bytes.
struct Serdata {
    ddsi_serdata base;  // first: Cyclone hands back &base
    bool keyHashIsDigest;
    bool holdsIndex;           // an untyped copy: listed in `index`, which it keeps a reference on
    InstanceIndex *index;      // its sertype's; keys of different indexes never compare equal
    std::uint64_t indexEntry;  // its entry there, when it holds the index (0: none)
    std::uint32_t wireSize;    // 0 for an untyped (key-only) copy
    std::uint32_t wireCapacity;
    std::uint32_t keySize;

    unsigned char *wire() noexcept { return reinterpret_cast<unsigned char *>(this + 1); }
    const unsigned char *wire() const noexcept { return reinterpret_cast<const unsigned char *>(this + 1); }
    unsigned char *key() noexcept { return wire() + wireCapacity; }
    const unsigned char *key() const noexcept { return wire() + wireCapacity; }
};
static_assert(std::is_standard_layout_v<Serdata>);

Serdata &serdataOf(ddsi_serdata *d) noexcept { return *reinterpret_cast<Serdata *>(d); }
const Serdata &serdataOf(const ddsi_serdata *d) noexcept { return *reinterpret_cast<const Serdata *>(d); }

std::uint32_t roundUpTo4(std::uint32_t size) noexcept { return (size + 3u) & ~3u; }

// A serdata with room for `wireSize` wire bytes and `keyCapacity` key bytes.
Serdata *newSerdata(const Sertype &type, ddsi_serdata_kind kind, std::uint32_t wireSize,
                    std::uint32_t keyCapacity) noexcept {
    std::uint32_t wireCapacity = roundUpTo4(wireSize);
    void *memory = std::malloc(sizeof(Serdata) + wireCapacity + keyCapacity);
    if (memory == nullptr) return nullptr;
    auto *d = new (memory) Serdata{};
    ddsi_serdata_init(&d->base, &type.base, kind);
    d->wireCapacity = wireCapacity;
    d->keyHashIsDigest = type.keyHashIsDigest;
    d->index = type.instances;
    return d;
}

void deleteSerdata(Serdata *d) noexcept {
    d->~Serdata();
    std::free(d);
}

OBLX_CdrStream streamOver(const unsigned char *bytes, std::uint32_t length, bool bigEndian) noexcept {
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, const_cast<unsigned char *>(bytes), length);
    OBLX_CdrStream_setBigEndian(&stream, bigEndian ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
    return stream;
}

// The canonical key of `sample` into `d`, and the hash Cyclone files it by.
// The key hash (an MD5 digest for long keys) is derived from the key bytes
// only when Cyclone asks for it, which most samples never need.
bool storeKey(const Sertype &type, const void *sample, Serdata &d) noexcept {
    d.keySize = 0;
    if (type.keyed) {
        OBLX_CdrStream stream = streamOver(d.key(), type.keyMaxSize, true);
        if (!cdr::serialize(stream, type.plan->key, sample)) return false;
        d.keySize = OBLX_CdrStream_getPosition(&stream);
    }
    d.base.hash = ddsrt_mh3(d.key(), d.keySize, type.base.serdata_basehash);
    return true;
}

void padWire(Serdata &d, std::uint32_t size) noexcept {
    d.wireSize = size;
    std::memset(d.wire() + size, 0, d.wireCapacity - size);
}

// ---- serdata from a sample, from the wire, and back ----------------------

// A sample that encodes but would not decode (an enumeration value that is
// none of its enumerators) never reaches a reader: Cyclone would hand a
// local reader the zeroed sample of a failed decode.
bool isDecodable(const Sertype &type, const void *sample) noexcept {
    types::EnumerationCheck::Fault fault{};
    if (type.enumerations->passes(sample, fault)) return true;
    char what[160];
    std::snprintf(what, sizeof what, "sample (%d is not a value of %s)", static_cast<int>(fault.value),
                  fault.enumeration != nullptr && fault.enumeration->name != nullptr ? fault.enumeration->name
                                                                                     : "its enumeration");
    OBLX_Report_badParameter(type.base.type_name, what);
    return false;
}

// Bytes that a serializer writes into: a per-thread buffer that holds the
// type's largest sample, so that a sample is encoded in one pass (measuring
// it first cost half as much again). Null when the type has no bound small
// enough or memory ran out.
unsigned char *encodingBuffer(DDS_UnsignedLong size) noexcept {
    constexpr DDS_UnsignedLong kLargestKept = 1u << 20;
    thread_local std::vector<unsigned char> buffer;
    if (size > kLargestKept) return nullptr;
    try {
        if (buffer.size() < size) buffer.resize(size);
    } catch (...) {
        return nullptr;
    }
    return buffer.data();
}

// A serdata of `capacity` wire bytes filled by `serialize`; null when it fails.
template <typename Serialize>
Serdata *encodedInPlace(const Sertype &type, ddsi_serdata_kind kind, std::uint32_t capacity,
                        Serialize serialize) noexcept {
    Serdata *d = capacity != 0 ? newSerdata(type, kind, capacity, type.keyMaxSize) : nullptr;
    if (d == nullptr) return nullptr;
    OBLX_CdrStream stream = streamOver(d->wire(), capacity, false);
    if (!serialize(stream)) {
        deleteSerdata(d);
        return nullptr;
    }
    padWire(*d, OBLX_CdrStream_getPosition(&stream));
    return d;
}

// A serdata filled by `serialize`: written once into the per-thread buffer
// and copied, or, when the largest sample does not fit that, written in
// place after `measure` has sized it.
template <typename Serialize, typename Measure>
Serdata *encoded(const Sertype &type, ddsi_serdata_kind kind, std::uint32_t maxSize, Serialize serialize,
                 Measure measure) noexcept {
    unsigned char *buffer = encodingBuffer(maxSize);
    if (buffer == nullptr) return encodedInPlace(type, kind, measure(), serialize);
    OBLX_CdrStream stream = streamOver(buffer, maxSize, false);
    if (!serialize(stream)) return nullptr;
    std::uint32_t size = OBLX_CdrStream_getPosition(&stream);
    Serdata *d = newSerdata(type, kind, size, type.keyMaxSize);
    if (d == nullptr) return nullptr;
    std::memcpy(d->wire(), buffer, size);
    padWire(*d, size);
    return d;
}

ddsi_serdata *fromSample(const ddsi_sertype *typeBase, ddsi_serdata_kind kind, const void *sample) noexcept {
    const Sertype &type = sertypeOf(typeBase);
    const OBLX_TypePlugin &plugin = type.plugin;
    if (sample == nullptr) return nullptr;
    bool whole = kind == SDK_DATA;
    if (whole && !isDecodable(type, sample)) return nullptr;
    OBLX_TypePluginSerializeFunction serialize = whole ? plugin.serialize : plugin.serialize_key;
    Serdata *d = encoded(
        type, kind, whole ? type.wireMaxSize : type.keyWireMaxSize,
        [&](OBLX_CdrStream &stream) {
            return serialize(nullptr, sample, &stream, DDS_BOOLEAN_TRUE, kWireEncapsulation, DDS_BOOLEAN_TRUE,
                             nullptr) != DDS_BOOLEAN_FALSE;
        },
        [&]() -> std::uint32_t {
            return whole ? plugin.get_serialized_sample_size(nullptr, DDS_BOOLEAN_TRUE, kWireEncapsulation, 0, sample)
                         : type.keyWireMaxSize;
        });
    if (d == nullptr) return nullptr;
    if (!storeKey(type, sample, *d)) {
        deleteSerdata(d);
        return nullptr;
    }
    return &d->base;
}

// The identifier bytes a sample of this type starts with: 00 02 / 00 03 for
// a parameter list, 00 00 / 00 01 for plain CDR.
bool hasOwnEncapsulation(const Sertype &type, const unsigned char *wire, std::uint32_t size) noexcept {
    DDS_UnsignedShort family = DDS_TypeCode_is_mutable(type.plugin.type_code) ? OBLX_CDR_ENCAPSULATION_PL_CDR_BE
                                                                              : OBLX_CDR_ENCAPSULATION_CDR_BE;
    return size >= OBLX_CDR_ENCAPSULATION_HEADER_SIZE && wire[0] == 0 && (wire[1] & ~1u) == family;
}

bool holdsBuffers(const cdr::Plan &keyOfSample) noexcept {
    return std::any_of(keyOfSample.steps().begin(), keyOfSample.steps().end(), [](const cdr::Step &step) {
        return step.kept && (step.kind == cdr::StepKind::string || step.kind == cdr::StepKind::sequence);
    });
}

// A per-thread block of `size` bytes that the key members of received bytes
// are read into when they are all numbers: nothing in it is allocated, and
// only the key members are ever written or read. Null when out of memory.
unsigned char *keyHolder(size_t size) noexcept {
    thread_local std::vector<unsigned char> holder;
    try {
        if (holder.size() < size) holder.resize(size);
    } catch (...) {
        return nullptr;
    }
    return holder.data();
}

// Checks the bytes in one pass, as the plugin's deserialize would read
// them, without a sample; a keyed type's key members are read on the way,
// over their initial values (a member missing from a parameter list keeps
// it), and give the key bytes. A key with strings or sequences is read
// into an initialized sample from the pool.
bool checkedWithKey(const Sertype &type, Serdata &d) noexcept {
    OBLX_CdrStream stream = streamOver(d.wire(), d.wireSize, false);
    if (!plugin::readEncapsulationHeader(stream)) return false;
    const plugin::TypePlan &plan = *type.plan;
    bool whole = d.base.kind == SDK_DATA;
    if (!type.keyed) return cdr::check(stream, whole ? plan.sample : plan.key, nullptr) && storeKey(type, nullptr, d);
    void *holder = type.keyHoldsBuffers ? type.scratch->acquire() : keyHolder(type.plugin.sample_size);
    if (holder == nullptr) return false;
    cdr::resetToInitialValues(plan.key, holder);
    bool valid = cdr::check(stream, whole ? plan.keyOfSample : plan.key, holder) && storeKey(type, holder, d);
    if (type.keyHoldsBuffers) type.scratch->release(holder);
    return valid;
}

// Bytes from the network are checked here, so that a sample that the
// plugin cannot read is dropped before it reaches a reader.
ddsi_serdata *validated(const Sertype &type, Serdata *d) noexcept {
    if (!hasOwnEncapsulation(type, d->wire(), d->wireSize) || !checkedWithKey(type, *d)) {
        deleteSerdata(d);
        return nullptr;
    }
    return &d->base;
}

// Fragments arrive in order and may overlap: each adds what lies past the
// bytes copied so far.
bool copyFragments(const nn_rdata *fragment, std::uint32_t size, unsigned char *out) noexcept {
    std::uint32_t copied = 0;
    for (; fragment != nullptr; fragment = fragment->nextfrag) {
        if (fragment->min > copied || fragment->maxp1 > size) return false;
        if (fragment->maxp1 <= copied) continue;
        const unsigned char *payload = NN_RMSG_PAYLOADOFF(fragment->rmsg, NN_RDATA_PAYLOAD_OFF(fragment));
        std::memcpy(out + copied, payload + (copied - fragment->min), fragment->maxp1 - copied);
        copied = fragment->maxp1;
    }
    return copied == size;
}

bool copyIovecs(ddsrt_msg_iovlen_t count, const ddsrt_iovec_t *iov, std::uint32_t size, unsigned char *out) noexcept {
    std::uint32_t copied = 0;
    for (ddsrt_msg_iovlen_t i = 0; i < count; ++i) {
        if (iov[i].iov_len > size - copied) return false;
        std::memcpy(out + copied, iov[i].iov_base, iov[i].iov_len);
        copied += static_cast<std::uint32_t>(iov[i].iov_len);
    }
    return copied == size;
}

template <typename CopyBytes>
ddsi_serdata *fromWire(const ddsi_sertype *typeBase, ddsi_serdata_kind kind, size_t size,
                       CopyBytes copyBytes) noexcept {
    const Sertype &type = sertypeOf(typeBase);
    if (size > UINT32_MAX - 3) return nullptr;
    auto wireSize = static_cast<std::uint32_t>(size);
    Serdata *d = newSerdata(type, kind, wireSize, type.keyMaxSize);
    if (d == nullptr) return nullptr;
    if (!copyBytes(d->wire(), wireSize)) {
        deleteSerdata(d);
        return nullptr;
    }
    padWire(*d, wireSize);
    return validated(type, d);
}

ddsi_serdata *fromSer(const ddsi_sertype *type, ddsi_serdata_kind kind, const nn_rdata *fragchain,
                      size_t size) noexcept {
    return fromWire(type, kind, size, [fragchain](unsigned char *out, std::uint32_t length) {
        return copyFragments(fragchain, length, out);
    });
}

ddsi_serdata *fromSerIov(const ddsi_sertype *type, ddsi_serdata_kind kind, ddsrt_msg_iovlen_t niov,
                         const ddsrt_iovec_t *iov, size_t size) noexcept {
    return fromWire(type, kind, size, [niov, iov](unsigned char *out, std::uint32_t length) {
        return copyIovecs(niov, iov, length, out);
    });
}

// A key hash alone does not give back the key (ours are digests), so an
// instance known only by its hash is not reconstructed.
ddsi_serdata *fromKeyhash(const ddsi_sertype *, const ddsi_keyhash *) noexcept { return nullptr; }

// Back to initial values, keeping the sample's buffers: by the compiled plan,
// or the type code's walk for a type the plan cannot describe.
void resetSample(const Sertype &type, void *sample) noexcept {
    const cdr::Plan &plan = type.plan->sample;
    if (plan.valid()) {
        cdr::resetToInitialValues(plan, sample);
    } else {
        types::sample::array::empty(*type.plugin.type_code, &sample, 1);
    }
}

// A whole sample sets every member; one read from a key alone starts from
// initial values, since Cyclone hands out loan elements uncleared.
bool toSample(const ddsi_serdata *dBase, void *sample, void **, void *) noexcept {
    const Serdata &d = serdataOf(dBase);
    const Sertype &type = sertypeOf(d.base.type);
    OBLX_CdrStream stream = streamOver(d.wire(), d.wireSize, false);
    if (d.base.kind == SDK_DATA) {
        void *target = sample;
        return type.plugin.deserialize(nullptr, &target, nullptr, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE, nullptr);
    }
    resetSample(type, sample);
    return type.plugin.deserialize_key_sample(nullptr, sample, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE, nullptr);
}

// The instance's key as Cyclone keeps it in its key-to-handle map: key
// bytes only, no type, so it may outlive the sertype; listed in the
// sertype's instance index for as long as Cyclone keeps it.
ddsi_serdata *toUntyped(const ddsi_serdata *dBase) noexcept {
    const Serdata &d = serdataOf(dBase);
    Serdata *copy = newSerdata(sertypeOf(d.base.type), SDK_KEY, 0, d.keySize);
    if (copy == nullptr) return nullptr;
    copy->keySize = d.keySize;
    std::memcpy(copy->key(), d.key(), d.keySize);
    copy->base.hash = d.base.hash;
    copy->base.type = nullptr;
    copy->holdsIndex = true;
    copy->index->retain();
    copy->indexEntry = copy->index->add(copy->key(), copy->keySize, d.base.type->type_name);
    return &copy->base;
}

// A sample holding the key of these key bytes, its other members initial.
bool keyIntoSample(const Sertype &type, const unsigned char *key, std::uint32_t keySize, void *sample) noexcept {
    resetSample(type, sample);
    if (!type.keyed) return true;
    OBLX_CdrStream stream = streamOver(key, keySize, true);
    return type.plugin.deserialize_key_sample(nullptr, sample, &stream, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_TRUE, nullptr);
}

bool untypedToSample(const ddsi_sertype *typeBase, const ddsi_serdata *dBase, void *sample, void **, void *) noexcept {
    const Serdata &d = serdataOf(dBase);
    return keyIntoSample(sertypeOf(typeBase), d.key(), d.keySize, sample);
}

// ---- the rest of the serdata interface -----------------------------------

bool eqkey(const ddsi_serdata *a, const ddsi_serdata *b) noexcept {
    const Serdata &x = serdataOf(a);
    const Serdata &y = serdataOf(b);
    return x.index == y.index && x.keySize == y.keySize && std::memcmp(x.key(), y.key(), x.keySize) == 0;
}

std::uint32_t getSize(const ddsi_serdata *d) noexcept { return serdataOf(d).wireSize; }

void toSer(const ddsi_serdata *d, size_t offset, size_t size, void *buffer) noexcept {
    std::memcpy(buffer, serdataOf(d).wire() + offset, size);
}

ddsi_serdata *toSerRef(const ddsi_serdata *d, size_t offset, size_t size, ddsrt_iovec_t *ref) noexcept {
    ref->iov_base = const_cast<unsigned char *>(serdataOf(d).wire() + offset);
    ref->iov_len = static_cast<ddsrt_iov_len_t>(size);
    return ddsi_serdata_ref(d);
}

void toSerUnref(ddsi_serdata *d, const ddsrt_iovec_t *) noexcept { ddsi_serdata_unref(d); }

// Never looks at d->type: an untyped copy may outlive its sertype (its
// index does not: the copy holds a reference).
void freeSerdata(ddsi_serdata *dBase) noexcept {
    Serdata &d = serdataOf(dBase);
    if (d.holdsIndex) {
        if (d.indexEntry != 0) d.index->remove(d.indexEntry);
        d.index->release();
    }
    deleteSerdata(&d);
}

size_t print(const ddsi_sertype *typeBase, const ddsi_serdata *dBase, char *buffer, size_t size) noexcept {
    const Sertype &type = sertypeOf(typeBase);
    const Serdata &d = serdataOf(dBase);
    types::sample::array::Scratch scratch(*type.plugin.type_code);
    bool decoded = scratch && (d.wireSize == 0 ? untypedToSample(typeBase, dBase, scratch.get(), nullptr, nullptr)
                                               : toSample(dBase, scratch.get(), nullptr, nullptr));
    std::string text;
    if (decoded)
        text = types::sample::print(*type.plugin.type_code, scratch.get(), types::sample::PrintLayout::oneLine);
    int needed = std::snprintf(buffer, size, "%s", decoded ? text.c_str() : "(undecodable)");
    return needed < 0 ? 0 : static_cast<size_t>(needed);
}

void getKeyhash(const ddsi_serdata *dBase, ddsi_keyhash *out, bool forceMd5) noexcept {
    const Serdata &d = serdataOf(dBase);
    // Any bound above 16 bytes makes keyHashOf digest the key.
    const std::uint64_t keyBound = forceMd5 || d.keyHashIsDigest ? UINT64_MAX : DDS_KEYHASH_LENGTH;
    cdr::keyHashOf(d.key(), d.keySize, keyBound, out->value);
}

// ---- the sertype's sample arrays and identity ----------------------------

void freeSertype(ddsi_sertype *typeBase) noexcept {
    ddsi_sertype_fini(typeBase);
    destroyParts(reinterpret_cast<Sertype *>(typeBase));
}

const DDS_TypeCode &typeCodeOf(const ddsi_sertype *type) noexcept { return *sertypeOf(type).plugin.type_code; }

// Nothing to clear: Cyclone 0.10.2 calls this over its reader's whole cached
// loan array before every loaned take (a reader that once held thousands of
// samples would reset thousands per take), and every sample it then hands
// out is filled by toSample or untypedToSample, which leave nothing of the
// element's last use. New elements are initialized by reallocSamples.
void zeroSamples(const ddsi_sertype *, void *, size_t) noexcept {}

void reallocSamples(void **ptrs, const ddsi_sertype *type, void *old, size_t, size_t count) noexcept {
    void *base = types::sample::array::resize(typeCodeOf(type), old, count);
    if (base == nullptr) {
        OBLX_Report_allocationFailure("ddsi_sertype_realloc_samples", count * sertypeOf(type).plugin.sample_size);
        for (size_t i = 0; i < count; ++i) ptrs[i] = nullptr;
        return;
    }
    types::sample::array::listElements(typeCodeOf(type), base, count, ptrs);
}

// DDS_FREE_ALL passes the array's base in ptrs[0] and frees the elements
// with the array. DDS_FREE_CONTENTS passes the elements of a returned loan,
// which stay in their array, buffers and all, for the next loan: there is
// nothing to free, and Cyclone calls zero_samples over the whole cached
// array right after, which empties them, so emptying them here too would
// only do it twice.
void freeSamples(const ddsi_sertype *type, void **ptrs, size_t, dds_free_op_t op) noexcept {
    if (ptrs == nullptr || ptrs[0] == nullptr) return;
    if ((op & DDS_FREE_ALL_BIT) != 0) types::sample::array::destroy(typeCodeOf(type), ptrs[0]);
}

bool equalSertypes(const ddsi_sertype *a, const ddsi_sertype *b) noexcept {
    return std::memcmp(&sertypeOf(a).plugin, &sertypeOf(b).plugin, sizeof(OBLX_TypePlugin)) == 0;
}

std::uint32_t hashSertype(const ddsi_sertype *type) noexcept {
    const DDS_TypeCode *code = sertypeOf(type).plugin.type_code;
    return ddsrt_mh3(&code, sizeof code, 0);
}

// Static for the life of the process: Cyclone may free a sertype on its
// own thread after the last entity using it is gone.
const ddsi_serdata_ops kSerdataOps{
    .eqkey = eqkey,
    .get_size = getSize,
    .from_ser = fromSer,
    .from_ser_iov = fromSerIov,
    .from_keyhash = fromKeyhash,
    .from_sample = fromSample,
    .to_ser = toSer,
    .to_ser_ref = toSerRef,
    .to_ser_unref = toSerUnref,
    .to_sample = toSample,
    .to_untyped = toUntyped,
    .untyped_to_sample = untypedToSample,
    .free = freeSerdata,
    .print = print,
    .get_keyhash = getKeyhash,
};

const ddsi_sertype_ops kSertypeOps{
    .version = ddsi_sertype_v0,
    .arg = nullptr,
    .free = freeSertype,
    .zero_samples = zeroSamples,
    .realloc_samples = reallocSamples,
    .free_samples = freeSamples,
    .equal = equalSertypes,
    .hash = hashSertype,
};

bool bridgeable(const OBLX_TypePlugin &p) noexcept {
    return p.type_code != nullptr && p.sample_size == p.type_code->sample_size && p.serialize != nullptr &&
           p.deserialize != nullptr && p.serialize_key != nullptr && p.deserialize_key != nullptr &&
           p.deserialize_key_sample != nullptr && p.instance_to_keyhash != nullptr && p.get_key_kind != nullptr &&
           p.get_serialized_sample_size != nullptr && p.get_serialized_sample_max_size != nullptr &&
           p.get_serialized_key_max_size != nullptr;
}

}  // namespace

std::uint64_t nextInstance(const ddsi_sertype *typeBase, dds_entity_t endpoint, std::uint64_t previous) {
    const Sertype &type = sertypeOf(typeBase);
    std::optional<types::sample::array::Scratch> keyHolder;  // made only when a key is to be looked up
    return type.instances->after(previous, [&](const std::string &key) -> std::uint64_t {
        if (!keyHolder) keyHolder.emplace(*type.plugin.type_code);
        if (!*keyHolder) throw std::bad_alloc();
        const auto *bytes = reinterpret_cast<const unsigned char *>(key.data());
        if (!keyIntoSample(type, bytes, static_cast<std::uint32_t>(key.size()), keyHolder->get())) return 0;
        return dds_lookup_instance(endpoint, keyHolder->get());
    });
}

ddsi_sertype *createSertype(const OBLX_TypePlugin *plugin, const char *registeredTypeName) noexcept {
    if (plugin == nullptr || registeredTypeName == nullptr || !bridgeable(*plugin)) return nullptr;
    DDS_UnsignedLong keyMaxSize = plugin->get_serialized_key_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 0);
    if (keyMaxSize == OBLX_TYPEPLUGIN_MAX_SIZE_OVERFLOW) return nullptr;
    auto *type = new (std::nothrow) Sertype{};
    if (type == nullptr) return nullptr;
    type->plugin = *plugin;
    type->scratch = new (std::nothrow) ScratchPool(*plugin->type_code);
    type->instances = new (std::nothrow) InstanceIndex();
    try {
        type->enumerations = new types::EnumerationCheck(*plugin->type_code);
        type->plan = new plugin::TypePlan(plugin::makeTypePlan(*plugin->type_code));
    } catch (...) {
        // what could not be made stays null
    }
    if (type->scratch == nullptr || type->enumerations == nullptr || type->plan == nullptr ||
        type->instances == nullptr) {
        destroyParts(type);
        return nullptr;
    }
    type->keyed = plugin->get_key_kind() != OBLX_TYPEPLUGIN_NO_KEY;
    type->keyHoldsBuffers = holdsBuffers(type->plan->keyOfSample);
    type->keyHashIsDigest = keyMaxSize > DDS_KEYHASH_LENGTH;
    type->keyMaxSize = keyMaxSize;
    type->keyWireMaxSize = plugin->get_serialized_key_max_size(nullptr, DDS_BOOLEAN_TRUE, kWireEncapsulation, 0);
    type->wireMaxSize = plugin->get_serialized_sample_max_size(nullptr, DDS_BOOLEAN_TRUE, kWireEncapsulation, 0);
    ddsi_sertype_init_flags(&type->base, registeredTypeName, &kSertypeOps, &kSerdataOps,
                            type->keyed ? 0u : DDSI_SERTYPE_FLAG_TOPICKIND_NO_KEY);
    type->base.allowed_data_representation = DDS_DATA_REPRESENTATION_FLAG_XCDR1;
    return &type->base;
}

}  // namespace vexar::dds
