// Default participant and endpoint data of the type plugins.
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/plugin/type_plugin.h"

struct OBLX_TypePluginParticipantData {
    void *registrationData;
};

namespace {

// Samples (or key holders) made by one factory and kept for reuse; the
// pool destroys what it holds when it goes.
class SamplePool {
public:
    explicit SamplePool(OBLX_TypePluginSampleFactory factory) noexcept : factory_(factory) {}
    SamplePool(const SamplePool &) = delete;
    SamplePool &operator=(const SamplePool &) = delete;
    ~SamplePool() {
        for (void *sample : idle_) factory_.destroy(sample);
    }

    void *create() const noexcept { return factory_.create(); }
    void destroy(void *sample) const noexcept {
        if (sample != nullptr) factory_.destroy(sample);
    }

    void *get() noexcept {
        {
            std::lock_guard lock(mutex_);
            if (!idle_.empty()) {
                void *sample = idle_.back();
                idle_.pop_back();
                return sample;
            }
        }
        return create();
    }

    // A sample that the pool cannot keep (out of memory) is destroyed.
    void put(void *sample) noexcept {
        if (sample == nullptr) return;
        try {
            std::lock_guard lock(mutex_);
            idle_.push_back(sample);
        } catch (...) {
            destroy(sample);
        }
    }

private:
    OBLX_TypePluginSampleFactory factory_;
    std::mutex mutex_;
    std::vector<void *> idle_;
};

bool complete(const OBLX_TypePluginSampleFactory &factory) noexcept {
    return factory.create != nullptr && factory.destroy != nullptr;
}

}  // namespace

struct OBLX_TypePluginEndpointData {
    OBLX_TypePluginEndpointData(OBLX_TypePluginEndpointKind endpointKind, OBLX_TypePluginSampleFactory sampleFactory,
                                OBLX_TypePluginSampleFactory keyFactory) noexcept
        : kind(endpointKind), samples(sampleFactory), keys(keyFactory) {}

    OBLX_TypePluginEndpointKind kind;
    SamplePool samples;
    SamplePool keys;
    std::unique_ptr<unsigned char[]> keyHashBuffer;
    OBLX_CdrStream keyHashStream{};
    DDS_UnsignedLong maxSerializedSampleSize = 0;
};

extern "C" {

OBLX_TypePluginParticipantData *OBLX_TypePluginDefaultParticipantData_new(void *registration_data) {
    return new (std::nothrow) OBLX_TypePluginParticipantData{registration_data};
}

void OBLX_TypePluginDefaultParticipantData_delete(OBLX_TypePluginParticipantData *participant_data) {
    delete participant_data;
}

OBLX_TypePluginEndpointData *OBLX_TypePluginDefaultEndpointData_new(OBLX_TypePluginParticipantData *,
                                                                    OBLX_TypePluginEndpointKind kind,
                                                                    OBLX_TypePluginSampleFactory samples,
                                                                    OBLX_TypePluginSampleFactory keys) {
    if (!complete(samples) || !complete(keys)) return nullptr;
    return new (std::nothrow) OBLX_TypePluginEndpointData(kind, samples, keys);
}

void OBLX_TypePluginDefaultEndpointData_delete(OBLX_TypePluginEndpointData *endpoint_data) { delete endpoint_data; }

OBLX_TypePluginEndpointKind
OBLX_TypePluginDefaultEndpointData_getKind(const OBLX_TypePluginEndpointData *endpoint_data) {
    return endpoint_data != nullptr ? endpoint_data->kind : OBLX_TYPEPLUGIN_ENDPOINT_READER;
}

DDS_Boolean OBLX_TypePluginDefaultEndpointData_createKeyHashStream(OBLX_TypePluginEndpointData *endpoint_data,
                                                                   DDS_UnsignedLong size) {
    if (endpoint_data == nullptr) return DDS_BOOLEAN_FALSE;
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[size == 0 ? 1 : size]());
    if (!buffer) return DDS_BOOLEAN_FALSE;
    OBLX_CdrStream_init(&endpoint_data->keyHashStream, buffer.get(), size);
    endpoint_data->keyHashBuffer = std::move(buffer);
    return DDS_BOOLEAN_TRUE;
}

OBLX_CdrStream *OBLX_TypePluginDefaultEndpointData_getKeyHashStream(OBLX_TypePluginEndpointData *endpoint_data) {
    if (endpoint_data == nullptr || !endpoint_data->keyHashBuffer) return nullptr;
    return &endpoint_data->keyHashStream;
}

void OBLX_TypePluginDefaultEndpointData_setMaxSerializedSampleSize(OBLX_TypePluginEndpointData *endpoint_data,
                                                                   DDS_UnsignedLong size) {
    if (endpoint_data != nullptr) endpoint_data->maxSerializedSampleSize = size;
}

DDS_UnsignedLong
OBLX_TypePluginDefaultEndpointData_getMaxSerializedSampleSize(const OBLX_TypePluginEndpointData *endpoint_data) {
    return endpoint_data != nullptr ? endpoint_data->maxSerializedSampleSize : 0;
}

void *OBLX_TypePluginDefaultEndpointData_createSample(OBLX_TypePluginEndpointData *endpoint_data) {
    return endpoint_data != nullptr ? endpoint_data->samples.create() : nullptr;
}

void OBLX_TypePluginDefaultEndpointData_deleteSample(OBLX_TypePluginEndpointData *endpoint_data, void *sample) {
    if (endpoint_data != nullptr) endpoint_data->samples.destroy(sample);
}

void *OBLX_TypePluginDefaultEndpointData_getSample(OBLX_TypePluginEndpointData *endpoint_data) {
    return endpoint_data != nullptr ? endpoint_data->samples.get() : nullptr;
}

void OBLX_TypePluginDefaultEndpointData_returnSample(OBLX_TypePluginEndpointData *endpoint_data, void *sample) {
    if (endpoint_data != nullptr) endpoint_data->samples.put(sample);
}

void *OBLX_TypePluginDefaultEndpointData_getKey(OBLX_TypePluginEndpointData *endpoint_data) {
    return endpoint_data != nullptr ? endpoint_data->keys.get() : nullptr;
}

void OBLX_TypePluginDefaultEndpointData_returnKey(OBLX_TypePluginEndpointData *endpoint_data, void *key) {
    if (endpoint_data != nullptr) endpoint_data->keys.put(key);
}

// CDR values are at most 8 bytes wide; malloc aligns for any of them.
void *OBLX_TypePlugin_getBuffer(OBLX_TypePluginEndpointData *, DDS_UnsignedLong size) {
    return std::malloc(size == 0 ? 1 : size);
}

void OBLX_TypePlugin_returnBuffer(OBLX_TypePluginEndpointData *, void *buffer) { std::free(buffer); }

}  // extern "C"
