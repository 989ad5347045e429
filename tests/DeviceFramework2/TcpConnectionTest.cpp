#include "DeviceFramework2/detail/TcpConnection.h"

#include "DeviceTesting.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <unistd.h>

#include <memory>
#include <vector>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using testing::StartsWith;

/// A listening socket that accepts only when told to, with room for `backlog` connections.
class Listener {
public:
    explicit Listener(int backlog) : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        ::listen(m_descriptor, backlog);
    }
    ~Listener() { ::close(m_descriptor); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] Endpoint endpoint() const {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        ::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        return Endpoint::of(address);
    }
    [[nodiscard]] int accept() const { return ::accept(m_descriptor, nullptr, nullptr); }

private:
    int m_descriptor;
};

TEST(TcpConnection, CarriesBytesBothWays) {
    const Listener listener(1);
    TcpConnection connection(listener.endpoint(), Deadline(PATIENT));
    const int other = listener.accept();
    EXPECT_EQ(connection.receiveNow(), std::nullopt);
    connection.send("ping", Deadline(PATIENT));
    char buffer[8] = "";
    EXPECT_EQ(::read(other, buffer, sizeof buffer), 4);
    EXPECT_STREQ(buffer, "ping");
    ASSERT_EQ(::write(other, "pong", 4), 4);
    EXPECT_EQ(connection.receive(Deadline(PATIENT)), "pong");
    ::close(other);
    EXPECT_EQ(connection.receive(Deadline(PATIENT)), "") << "the end";
}

TEST(TcpConnection, AConnectionThatNobodyAcceptsEndsAtItsLimit) {
    const Listener listener(0);
    // The first connections fill the queue of the listener; the system leaves the next ones without an answer.
    std::vector<std::unique_ptr<TcpConnection>> filling;
    std::string fault = "no fault";
    std::chrono::milliseconds time{0};
    for (int i = 0; i < 8 && fault == "no fault"; ++i) {
        time = timeOf([&] {
            fault = faultOf(
                [&] { filling.push_back(std::make_unique<TcpConnection>(listener.endpoint(), Deadline(IMPATIENT))); });
        });
    }
    EXPECT_EQ(fault, "no connection within 150 ms");
    EXPECT_GE(time, IMPATIENT);
    EXPECT_LT(time, IMPATIENT + GRACE);
}

TEST(TcpConnection, BytesThatNobodyReadsEndAtTheirLimit) {
    const Listener listener(1);
    TcpConnection connection(listener.endpoint(), Deadline(PATIENT));
    const std::string much(64 << 20, 'x');
    std::string fault;
    const auto time = timeOf([&] { fault = faultOf([&] { connection.send(much, Deadline(IMPATIENT)); }); });
    EXPECT_EQ(fault, "the command could not be sent within 150 ms");
    EXPECT_LT(time, IMPATIENT + GRACE);
}

TEST(TcpConnection, ABrokenConnectionIsAFaultAndNoSignal) {
    const Listener listener(1);
    TcpConnection connection(listener.endpoint(), Deadline(PATIENT));
    const int other = listener.accept();
    const linger abort{1, 0};
    ::setsockopt(other, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    ::close(other);
    EXPECT_THAT(faultOf([&] { static_cast<void>(connection.receive(Deadline(PATIENT))); }),
                StartsWith("the connection broke: "));
    EXPECT_THAT(faultOf([&] { connection.send("ping", Deadline(PATIENT)); }),
                StartsWith("the command could not be sent: "));
}

TEST(TcpConnection, ClosingGivesTheDescriptorBack) {
    const Listener listener(8);
    const auto before = openDescriptors();
    {
        TcpConnection first(listener.endpoint(), Deadline(PATIENT));
        TcpConnection second(listener.endpoint(), Deadline(PATIENT));
        EXPECT_EQ(openDescriptors(), before + 2);
        second.close();
        second.close();
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
