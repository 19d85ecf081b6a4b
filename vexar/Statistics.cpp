#include "vexar/Statistics.h"

#include "vexar/message_counts.hpp"
#include "vexar/report_line.hpp"

extern "C" {

DDS_ReturnCode_t QTV_VX_Vexar_getStatistics(QTV_VX_Statistics *statistics) {
    if (!vexar::present(statistics, "QTV_VX_Vexar_getStatistics", "Statistics record is NULL")) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    // Accepted as the queues count it, inside the push: a snapshot then never
    // shows more messages settled than accepted.
    const vexar::QueueOutcomes queues = vexar::queueOutcomes();
    const vexar::CallOutcomes calls = vexar::callOutcomesOfProcess();
    *statistics = QTV_VX_Statistics{queues.queued,    calls.refused, calls.dropped,
                                    queues.published, queues.failed, queues.discarded};
    return DDS_RETCODE_OK;
}

}  // extern "C"
