// Datagrams that anyone on the network can send to a logger's ports: empty
// ones and malformed ones, by the thousand. What Cyclone says about them
// must not become a flood of log messages in every subscriber.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/log/logger.h"
#include "support/domains.h"
#include "support/own_udp_sockets.hpp"
#include "support/running_logger.hpp"

using namespace vexar_test;

namespace {

constexpr int kCopies = 1000;

// An RTPS header from an unknown vendor (153.153) and an INFO_TS submessage
// two bytes long: Cyclone reports "malformed packet received from vendor
// 153.153 ...". Then an RTPS header with a submessage of that vendor's own,
// and bytes that are no RTPS at all: Cyclone says nothing about these.
const std::string kMalformedSubmessage("RTPS\x02\x01\x99\x99"
                                       "ABCDEFGHIJKL\x09\x01\x02\x00\x01\x02",
                                       26);
const std::string kVendorSubmessage("RTPS\x02\x01\x99\x99"
                                    "ABCDEFGHIJKL\x80\x01\x04\x00\x01\x02\x03\x04",
                                    28);
const std::string kNoRtps(40, '\xab');

// Sends every kind of datagram kCopies times to each UDP port of this
// process (the logger's participant has them all), then waits until Cyclone
// has read them all; returns how many were sent.
int floodOwnPorts() {
    const std::vector<UdpSocketState> sockets = ownUdpSockets();
    EXPECT_FALSE(sockets.empty());
    for (const UdpSocketState &socket : sockets) {
        for (const std::string &datagram : {std::string(), kMalformedSubmessage, kVendorSubmessage, kNoRtps}) {
            sendDatagrams(socket.port, datagram, kCopies);
        }
    }
    EXPECT_TRUE(allReceivedRead(std::chrono::seconds(10)));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the last one read is being handled
    return static_cast<int>(sockets.size()) * 4 * kCopies;
}

std::vector<QueuedMessage> middlewareLines(const std::vector<QueuedMessage> &messages) {
    std::vector<QueuedMessage> lines;
    for (const QueuedMessage &message : messages) {
        if (message.category == QTV_VX_VEXAR_INFRASTRUCTURE_CATEGORY) lines.push_back(message);
    }
    return lines;
}

std::string listed(const std::vector<QueuedMessage> &messages) {
    std::string all;
    for (const QueuedMessage &message : messages) all += std::to_string(message.level) + " " + message.message;
    return all;
}

TEST(LoggerDatagramFlood, NothingIsPublishedAtTheDefaultVerbosity) {
    LoggerSession session(loggerOptions(domains::kLoggerBase + 64));
    ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    const int sent = floodOwnPorts();
    const std::vector<QueuedMessage> lines = middlewareLines(drainQueue(QTV_VX_Vexar_getMessageQueue()));
    EXPECT_LE(lines.size(), 2u) << sent << " datagrams sent, captured:\n" << listed(lines);
    for (const QueuedMessage &line : lines) EXPECT_NE(line.level, QTV_VX_LOG_LEVEL_ERROR) << line.message;
}

// With COMMUNICATION warnings on, each kind of line on each socket is
// published once and counted after; nothing is an error.
TEST(LoggerDatagramFlood, WarningsAreCollapsedIntoTheFirstAndACount) {
    LoggerSession session(loggerOptions(domains::kLoggerBase + 65));
    ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    OBLX_Config_Logger_set_verbosity_by_category(
        OBLX_Config_Logger_get_instance(), OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    const int sent = floodOwnPorts();
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));  // every window has ended
    const std::vector<QueuedMessage> lines = middlewareLines(drainQueue(QTV_VX_Vexar_getMessageQueue()));

    // Two kinds of line per socket, each the first and a count, once per
    // second that the flood lasted.
    EXPECT_LE(lines.size(), 4 * ownUdpSockets().size() * 2) << sent << " datagrams sent, captured:\n" << listed(lines);
    int empties = 0, malformed = 0, counts = 0;
    for (const QueuedMessage &line : lines) {
        EXPECT_EQ(line.level, QTV_VX_LOG_LEVEL_WARNING) << line.message;
        empties += line.message.find("WARNING COMMUNICATION ddsi_udp_conn_read: UDP recvmsg sock ") == 0;
        malformed += line.message.find("malformed packet received from vendor 153.153") != std::string::npos;
        counts += line.message.find(" times)\n") != std::string::npos;
    }
    EXPECT_GT(empties, 0) << listed(lines);
    EXPECT_GT(malformed, 0) << listed(lines);
    EXPECT_GT(counts, 0) << listed(lines);
}

}  // namespace
