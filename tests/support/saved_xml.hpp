// Everything loaded into the participant factory, as it saves it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/dds/domain_participant_factory.h"

namespace vexar_test {

inline std::string savedXml() {
    char *text = nullptr;
    std::size_t length = 0;
    FILE *out = open_memstream(&text, &length);
    EXPECT_EQ(DDS_DomainParticipantFactory_save_xml(DDS_DomainParticipantFactory_get_instance(), out), DDS_RETCODE_OK);
    std::fclose(out);
    std::string saved(text, length);
    std::free(text);
    return saved;
}

}  // namespace vexar_test
