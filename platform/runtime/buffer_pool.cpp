#include "platform/runtime/buffer_pool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>

#include "platform/log/report.h"

namespace {

constexpr size_t roundUp(size_t value, size_t alignment) noexcept {
    return (value + alignment - 1) / alignment * alignment;
}

constexpr bool isPowerOfTwo(size_t value) noexcept { return value != 0 && (value & (value - 1)) == 0; }

// A free buffer holds the link to the next free one in its first bytes.
struct FreeBuffer {
    FreeBuffer *next;
};

// Each allocation of buffers: this header, then the buffers.
struct Block {
    Block *next;
};

bool isValidProperty(const OBLX_BufferPoolProperty &property) noexcept {
    const bool maximalOk = property.maximal == OBLX_BUFFER_POOL_UNLIMITED || property.maximal >= property.initial;
    const bool incrementOk = property.increment >= 0 || property.increment == OBLX_BUFFER_POOL_INCREMENT_DOUBLE;
    return property.initial >= 0 && maximalOk && incrementOk;
}

}  // namespace

struct OBLX_BufferPool {
public:
    OBLX_BufferPool(size_t bufferSize, size_t alignment, const OBLX_BufferPoolProperty &property) noexcept
        : property_(property),
          bufferSize_(bufferSize),
          alignment_(std::max(alignment, alignof(FreeBuffer))),
          slotSize_(roundUp(std::max(bufferSize, sizeof(FreeBuffer)), alignment_)),
          blockHeaderSize_(roundUp(sizeof(Block), alignment_)) {}

    ~OBLX_BufferPool() {
        while (blocks_ != nullptr) {
            Block *next = blocks_->next;
            ::operator delete(blocks_, std::align_val_t(alignment_));
            blocks_ = next;
        }
    }

    OBLX_BufferPool(const OBLX_BufferPool &) = delete;
    OBLX_BufferPool &operator=(const OBLX_BufferPool &) = delete;

    void *get() noexcept {
        const auto lock = lockIfShared();
        if (freeList_ == nullptr && !addBlock(growthCount())) {
            return nullptr;
        }
        FreeBuffer *buffer = freeList_;
        freeList_ = buffer->next;
        if (freeList_ == nullptr) freeTail_ = nullptr;
        ++handedOut_;
        if (property_.zeroOnGet) {
            std::memset(buffer, 0, bufferSize_);
        }
        return buffer;
    }

    void put(void *buffer) noexcept {
        const auto lock = lockIfShared();
        appendFree(buffer);
        ++returned_;
    }

    // The initial block; runs before the pool is shared.
    bool preallocate() noexcept { return property_.initial == 0 || addBlock(property_.initial); }

    DDS_Long bufferCount() noexcept {
        const auto lock = lockIfShared();
        return totalCount_;
    }

    DDS_Long freeBufferCount() noexcept {
        const auto lock = lockIfShared();
        return totalCount_ - handedOut_ + returned_;
    }

private:
    std::unique_lock<std::mutex> lockIfShared() noexcept {
        return property_.multiThreadedAccess ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>();
    }

    // First in, first out: a buffer just given back is still in the cache of
    // the thread that gave it, and handing out the oldest instead spares the
    // taker (a logging thread, when the giver is the queue's consumer) from
    // pulling those lines across cores.
    void appendFree(void *buffer) noexcept {
        auto *freed = static_cast<FreeBuffer *>(buffer);
        freed->next = nullptr;
        if (freeTail_ != nullptr) {
            freeTail_->next = freed;
        } else {
            freeList_ = freed;
        }
        freeTail_ = freed;
    }

    // Never past `maximal`; doubling starts from one buffer.
    DDS_Long growthCount() const noexcept {
        DDS_Long count = property_.increment == OBLX_BUFFER_POOL_INCREMENT_DOUBLE ? std::max(totalCount_, DDS_Long{1})
                                                                                  : property_.increment;
        if (property_.maximal != OBLX_BUFFER_POOL_UNLIMITED) {
            count = std::min(count, property_.maximal - totalCount_);
        }
        return count;
    }

    // One block of `count` buffers; false when there is nothing to add or no memory.
    bool addBlock(DDS_Long count) noexcept {
        if (count <= 0 || static_cast<size_t>(count) > (SIZE_MAX - blockHeaderSize_) / slotSize_) {
            return false;
        }
        const size_t bytes = blockHeaderSize_ + static_cast<size_t>(count) * slotSize_;
        auto *block = static_cast<Block *>(::operator new(bytes, std::align_val_t(alignment_), std::nothrow));
        if (block == nullptr) {
            OBLX_Report_allocationFailure("OBLX_BufferPool_getBuffer", bytes);
            return false;
        }
        block->next = blocks_;
        blocks_ = block;
        std::byte *first = reinterpret_cast<std::byte *>(block) + blockHeaderSize_;
        for (DDS_Long i = 0; i < count; ++i) {
            appendFree(first + static_cast<size_t>(i) * slotSize_);
        }
        totalCount_ += count;
        return true;
    }

    const OBLX_BufferPoolProperty property_;
    const size_t bufferSize_;
    const size_t alignment_;
    const size_t slotSize_;
    const size_t blockHeaderSize_;
    std::mutex mutex_;
    Block *blocks_ = nullptr;
    DDS_Long totalCount_ = 0;
    // The taking end and the giving end on cache lines of their own.
    alignas(64) FreeBuffer *freeList_ = nullptr;
    DDS_Long handedOut_ = 0;
    alignas(64) FreeBuffer *freeTail_ = nullptr;
    DDS_Long returned_ = 0;
};

extern "C" {

OBLX_BufferPool *OBLX_BufferPool_new(size_t bufferSize, size_t alignment, const OBLX_BufferPoolProperty *property) {
    constexpr const char *context = "OBLX_BufferPool_new";
    if (property == nullptr || !isValidProperty(*property)) {
        OBLX_Report_badParameter(context, "property");
        return nullptr;
    }
    if (bufferSize == 0 || (alignment != 0 && !isPowerOfTwo(alignment))) {
        OBLX_Report_badParameter(context, bufferSize == 0 ? "bufferSize" : "alignment");
        return nullptr;
    }
    const size_t effectiveAlignment = alignment == 0 ? alignof(std::max_align_t) : alignment;
    auto *pool = new (std::nothrow) OBLX_BufferPool(bufferSize, effectiveAlignment, *property);
    if (pool == nullptr) {
        OBLX_Report_allocationFailure(context, sizeof(OBLX_BufferPool));
        return nullptr;
    }
    if (!pool->preallocate()) {
        delete pool;
        return nullptr;
    }
    return pool;
}

void *OBLX_BufferPool_getBuffer(OBLX_BufferPool *pool) {
    if (pool == nullptr) {
        OBLX_Report_badParameter("OBLX_BufferPool_getBuffer", "pool");
        return nullptr;
    }
    return pool->get();
}

void OBLX_BufferPool_returnBuffer(OBLX_BufferPool *pool, void *buffer) {
    if (pool == nullptr) {
        OBLX_Report_badParameter("OBLX_BufferPool_returnBuffer", "pool");
        return;
    }
    if (buffer != nullptr) {
        pool->put(buffer);
    }
}

void OBLX_BufferPool_delete(OBLX_BufferPool *pool) { delete pool; }

DDS_Long OBLX_BufferPool_getBufferCount(OBLX_BufferPool *pool) { return pool != nullptr ? pool->bufferCount() : 0; }

DDS_Long OBLX_BufferPool_getFreeBufferCount(OBLX_BufferPool *pool) {
    return pool != nullptr ? pool->freeBufferCount() : 0;
}

}  // extern "C"
