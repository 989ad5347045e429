#include "DeviceFramework2/detail/Sockets.h"

#include "DeviceTesting.h"
#include "Listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <memory>
#include <vector>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;
using testing::StartsWith;

bool comes(const TcpConnection& connection, short event, std::chrono::milliseconds limit = PATIENT) {
    return connection.socket().waitFor(event, Deadline(limit));
}

/// A connection that has been made, or has failed.
std::unique_ptr<TcpConnection> connected(const Listener& listener) {
    auto connection = std::make_unique<TcpConnection>(listener.endpoint());
    EXPECT_TRUE(comes(*connection, POLLOUT));
    return connection;
}

TEST(TcpConnection, CarriesBytesBothWaysWithoutWaiting) {
    const Listener listener(1);
    const auto connection = connected(listener);
    connection->requireConnected();
    const int other = listener.accept();
    EXPECT_EQ(connection->receive(), std::nullopt) << "nothing is there";
    EXPECT_EQ(connection->send("ping"), 4U);
    char buffer[8] = "";
    EXPECT_EQ(::read(other, buffer, sizeof buffer), 4);
    EXPECT_STREQ(buffer, "ping");
    ASSERT_EQ(::write(other, "pong", 4), 4);
    ASSERT_TRUE(comes(*connection, POLLIN));
    EXPECT_EQ(connection->receive(), "pong");
    ::close(other);
    ASSERT_TRUE(comes(*connection, POLLIN));
    EXPECT_EQ(connection->receive(), "") << "the end";
}

TEST(TcpConnection, AConnectionThatNobodyAcceptsIsNeverReady) {
    const Listener listener(0);
    // The first connections fill the queue of the listener; the system leaves the next ones without an answer.
    std::vector<std::unique_ptr<TcpConnection>> filling;
    bool ready = true;
    for (int i = 0; i < 8 && ready; ++i) {
        filling.push_back(std::make_unique<TcpConnection>(listener.endpoint()));
        ready = comes(*filling.back(), POLLOUT, IMPATIENT);
    }
    EXPECT_FALSE(ready);
}

TEST(TcpConnection, ARefusedConnectionIsAFault) {
    const Endpoint gone = Listener(1).endpoint();
    EXPECT_EQ(faultOf([&] {
                  const TcpConnection connection(gone);
                  EXPECT_TRUE(comes(connection, POLLOUT));
                  connection.requireConnected();
              }),
              "no connection: Connection refused");
}

TEST(TcpConnection, BytesThatNobodyReadsAreSentAsFarAsTheSystemTakesThem) {
    const Listener listener(1);
    const auto connection = connected(listener);
    const std::string much(64 << 20, 'x');
    const std::size_t sent = connection->send(much);
    EXPECT_GT(sent, 0U);
    EXPECT_LT(sent, much.size());
    EXPECT_FALSE(comes(*connection, POLLOUT, IMPATIENT));
}

TEST(TcpConnection, ABrokenConnectionIsAFaultAndNoSignal) {
    const Listener listener(1);
    const auto connection = connected(listener);
    const int other = listener.accept();
    const linger abort{1, 0};
    ::setsockopt(other, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    ::close(other);
    ASSERT_TRUE(comes(*connection, POLLIN));
    EXPECT_THAT(faultOf([&] { static_cast<void>(connection->receive()); }), StartsWith("the connection broke: "));
    EXPECT_THAT(faultOf([&] { static_cast<void>(connection->send("ping")); }),
                StartsWith("the command could not be sent: "));
}

TEST(TcpConnection, ItsEndGivesTheDescriptorBack) {
    const Listener listener(8);
    const auto before = openDescriptors();
    {
        const TcpConnection first(listener.endpoint());
        const TcpConnection second(listener.endpoint());
        EXPECT_EQ(openDescriptors(), before + 2);
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
