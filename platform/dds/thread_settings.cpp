#include "platform/dds/thread_settings.h"

#include "platform/log/report.h"

namespace {

// The sequence accessors take non-const records although they only read.
DDS_LongSeq *readable(const DDS_LongSeq *sequence) { return const_cast<DDS_LongSeq *>(sequence); }

bool equalCpuLists(const DDS_LongSeq *left, const DDS_LongSeq *right) {
    const DDS_Long length = DDS_LongSeq_get_length(readable(left));
    if (length != DDS_LongSeq_get_length(readable(right))) return false;
    for (DDS_Long i = 0; i < length; ++i) {
        if (*DDS_LongSeq_get_reference(readable(left), i) != *DDS_LongSeq_get_reference(readable(right), i)) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" {

DDS_Boolean DDS_ThreadSettings_t_initialize(DDS_ThreadSettings_t *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter("DDS_ThreadSettings_t_initialize", "self");
        return DDS_BOOLEAN_FALSE;
    }
    *self = DDS_ThreadSettings_t DDS_THREAD_SETTINGS_DEFAULT;
    return DDS_LongSeq_initialize(&self->cpu_list);
}

DDS_Boolean DDS_ThreadSettings_t_copy(DDS_ThreadSettings_t *self, const DDS_ThreadSettings_t *src) {
    if (self == nullptr || src == nullptr) {
        OBLX_Report_badParameter("DDS_ThreadSettings_t_copy", self == nullptr ? "self" : "src");
        return DDS_BOOLEAN_FALSE;
    }
    if (self == src) return DDS_BOOLEAN_TRUE;
    if (DDS_LongSeq_copy(&self->cpu_list, &src->cpu_list) == nullptr) return DDS_BOOLEAN_FALSE;
    self->mask = src->mask;
    self->priority = src->priority;
    self->stack_size = src->stack_size;
    self->cpu_rotation = src->cpu_rotation;
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean DDS_ThreadSettings_is_equal(const DDS_ThreadSettings_t *left, const DDS_ThreadSettings_t *right) {
    if (left == nullptr || right == nullptr) return left == right ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    const bool equal = left->mask == right->mask && left->priority == right->priority &&
                       left->stack_size == right->stack_size && left->cpu_rotation == right->cpu_rotation &&
                       equalCpuLists(&left->cpu_list, &right->cpu_list);
    return equal ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

DDS_Boolean DDS_ThreadSettings_t_finalize(DDS_ThreadSettings_t *self) {
    if (self == nullptr) return DDS_BOOLEAN_TRUE;
    return DDS_LongSeq_finalize(&self->cpu_list);
}

}  // extern "C"
