#include "DeviceFramework2/detail/PjlinkConversation.h"

#include "DeviceTesting.h"
#include "Listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <memory>
#include <vector>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;

const PjlinkRequest CLASS_QUESTION{'1', "CLSS", "?"};

std::unique_ptr<PjlinkConversation> conversationWith(const Listener& listener) {
    return std::make_unique<PjlinkConversation>(listener.endpoint(), L"020000000001", impatientSettings());
}

/// Lets a conversation go on that the socket of the other side has just been made ready for.
void proceed(PjlinkConversation& conversation) {
    ASSERT_TRUE(conversation.socket().waitFor(conversation.events(), Deadline(PATIENT)));
    conversation.proceed();
}

TEST(PjlinkConversation, NeverWaitsWhateverTheProjectorLeavesOut) {
    const Listener listener(1);
    const auto conversation = conversationWith(listener);
    EXPECT_EQ(conversation->events(), POLLOUT) << "it connects";
    EXPECT_EQ(conversation->deadline().limit(), PATIENT);
    proceed(*conversation);
    const int projector = listener.accept();

    EXPECT_EQ(conversation->events(), POLLIN) << "a greeting is due";
    EXPECT_EQ(conversation->deadline().limit(), IMPATIENT);
    conversation->proceed();
    EXPECT_FALSE(conversation->isReady()) << "nothing was there";
    ASSERT_EQ(::write(projector, "PJLINK 0\r", 9), 9);
    proceed(*conversation);
    ASSERT_TRUE(conversation->isReady());

    conversation->send(CLASS_QUESTION);
    EXPECT_FALSE(conversation->isReady());
    EXPECT_EQ(conversation->takeReply(), std::nullopt);
    ASSERT_EQ(::write(projector, "%1CLSS=2\r", 9), 9);
    proceed(*conversation);
    ASSERT_TRUE(conversation->isReady());
    EXPECT_EQ(conversation->takeReply().value().value, "2");
    ::close(projector);
}

TEST(PjlinkConversation, SaysWhichWaitIsOver) {
    const Listener listener(1);
    const auto conversation = conversationWith(listener);
    EXPECT_EQ(faultOf([&] { conversation->expire(); }), "no connection within 5000 ms");
    proceed(*conversation);
    EXPECT_EQ(faultOf([&] { conversation->expire(); }), "no answer within 150 ms");
}

TEST(PjlinkConversation, AConnectionThatNobodyAcceptsIsNeverReady) {
    const Listener listener(0);
    // The first connections fill the queue of the listener; the system leaves the next ones without an answer.
    std::vector<std::unique_ptr<PjlinkConversation>> filling;
    bool ready = true;
    for (int i = 0; i < 8 && ready; ++i) {
        filling.push_back(conversationWith(listener));
        ready = filling.back()->socket().waitFor(filling.back()->events(), Deadline(IMPATIENT));
    }
    ASSERT_FALSE(ready);
    EXPECT_EQ(faultOf([&] { filling.back()->expire(); }), "no connection within 5000 ms");
}

TEST(PjlinkConversation, WhatTheSystemDoesNotTakeIsSentLater) {
    const Listener listener(1);
    const auto conversation = conversationWith(listener);
    proceed(*conversation);
    const int projector = listener.accept();
    ASSERT_EQ(::write(projector, "PJLINK 0\r", 9), 9);
    proceed(*conversation);
    // The system's buffers are filled behind the back of the conversation.
    const std::string much(64 << 20, 'x');
    std::size_t filled = 0;
    for (ssize_t count = 1; count > 0;) {
        count = ::send(conversation->socket().descriptor(), much.data(), much.size(), MSG_NOSIGNAL);
        filled += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    conversation->send(CLASS_QUESTION);
    EXPECT_EQ(conversation->events(), POLLOUT);
    EXPECT_EQ(faultOf([&] { conversation->expire(); }), "the command could not be sent within 150 ms");

    std::string received;
    std::vector<char> buffer(1 << 20);
    while (received.size() < filled) {
        const ssize_t count = ::read(projector, buffer.data(), buffer.size());
        ASSERT_GT(count, 0);
        received.append(buffer.data(), static_cast<std::size_t>(count));
    }
    proceed(*conversation);
    EXPECT_EQ(conversation->events(), POLLIN);
    char line[16] = "";
    EXPECT_EQ(::read(projector, line, sizeof line), 9);
    EXPECT_STREQ(line, "%1CLSS ?\r");
    ::close(projector);
}

}  // namespace
