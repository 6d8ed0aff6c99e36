#include "support/Allocations.h"

#include "KUVCommand.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace {

/// A callback that writes `letter` into `log`.
KUVCallback Write(std::string& log, char letter)
{
    return [&log, letter](const char* /*name*/, KUVNotification* /*notification*/,
                          KUVBaseUnknown* /*sender*/) { log += letter; };
}

/// A callback without arguments.
template <class Action>
KUVCallback Do(Action action)
{
    return [action](const char* /*name*/, KUVNotification* /*notification*/,
                    KUVBaseUnknown* /*sender*/) { action(); };
}

}  // namespace

TEST(KUVCallbackManager, CallsTheListenersOfAnEventInTheOrderOfSubscription)
{
    KUVCallbackManager manager;
    std::string log;
    manager.Subscribe("SelectEvt", nullptr, Write(log, 'a'));
    manager.Subscribe("HoverEvt", nullptr, Write(log, 'b'));
    manager.Subscribe("SelectEvt", nullptr, Write(log, 'c'));
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "ac");
}

TEST(KUVCallbackManager, HandsOverNameNotificationAndSender)
{
    KUVCallbackManager manager;
    KUVNotification notification;
    KUVBaseUnknown sender;
    int calls = 0;
    manager.Subscribe("SelectEvt", &sender,
                      [&](const char* name, KUVNotification* given, KUVBaseUnknown* from) {
                          ++calls;
                          EXPECT_STREQ(name, "SelectEvt");
                          EXPECT_EQ(given, &notification);
                          EXPECT_EQ(from, &sender);
                      });
    manager.DispatchCallbacks("SelectEvt", &notification, &sender);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(sender.GetReferenceCount(), 1U) << "nothing is referenced";
}

TEST(KUVCallbackManager, ANullNotificationArrivesAsNull)
{
    KUVCallbackManager manager;
    bool called = false;
    manager.Subscribe(
        "RootEvt", nullptr,
        [&called](const char* /*name*/, KUVNotification* notification, KUVBaseUnknown* /*sender*/) {
            called = true;
            EXPECT_EQ(notification, nullptr);
        });
    manager.DispatchCallbacks("RootEvt", nullptr, nullptr);
    EXPECT_TRUE(called);
}

TEST(KUVCallbackManager, AListenerOfOneSenderDoesNotHearAnother)
{
    KUVCallbackManager manager;
    KUVBaseUnknown one;
    KUVBaseUnknown other;
    std::string log;
    manager.Subscribe("SelectEvt", &one, Write(log, '1'));
    manager.Subscribe("SelectEvt", nullptr, Write(log, '*'));
    manager.DispatchCallbacks("SelectEvt", nullptr, &other);
    EXPECT_EQ(log, "*");
    manager.DispatchCallbacks("SelectEvt", nullptr, &one);
    EXPECT_EQ(log, "*1*");
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "*1**");
}

TEST(KUVCallbackManager, ANullNameDispatchesNothing)
{
    KUVCallbackManager manager;
    std::string log;
    manager.Subscribe("", nullptr, Write(log, 'a'));
    manager.DispatchCallbacks(nullptr, nullptr, nullptr);
    EXPECT_EQ(log, "");
    manager.DispatchCallbacks("", nullptr, nullptr);
    EXPECT_EQ(log, "a");
}

TEST(KUVCallbackManager, NothingIsSubscribedWithoutNameOrCallback)
{
    KUVCallbackManager manager;
    std::string log;
    EXPECT_EQ(manager.Subscribe(nullptr, nullptr, Write(log, 'a')), 0U);
    EXPECT_EQ(manager.Subscribe("SelectEvt", nullptr, KUVCallback()), 0U);
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "");
}

TEST(KUVCallbackManager, AnEndedSubscriptionIsNotCalled)
{
    KUVCallbackManager manager;
    std::string log;
    const KUVSubscription first = manager.Subscribe("SelectEvt", nullptr, Write(log, 'a'));
    const KUVSubscription second = manager.Subscribe("SelectEvt", nullptr, Write(log, 'b'));
    EXPECT_NE(first, second);
    manager.Unsubscribe(first);
    manager.Unsubscribe(first);
    manager.Unsubscribe(0);
    manager.Unsubscribe(99);
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "b");
}

TEST(KUVCallbackManager, WhatACallbackCapturedDiesWithItsSubscription)
{
    KUVCallbackManager manager;
    const auto captured = std::make_shared<int>(0);
    const KUVSubscription subscription =
        manager.Subscribe("SelectEvt", nullptr, Do([captured] { ++*captured; }));
    EXPECT_EQ(captured.use_count(), 2);
    manager.Unsubscribe(subscription);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(KUVCallbackManager, AListenerMaySubscribeWhileADispatchRuns)
{
    KUVCallbackManager manager;
    std::string log;
    manager.Subscribe("SelectEvt", nullptr, Do([&] {
                          log += 'a';
                          for (int i = 0; i < 100; ++i)
                              manager.Subscribe("SelectEvt", nullptr, Write(log, 'n'));
                      }));
    manager.Subscribe("SelectEvt", nullptr, Write(log, 'b'));
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "ab") << "those who subscribe during a dispatch hear the next one";
}

TEST(KUVCallbackManager, AListenerMayUnsubscribeItselfAndOthersWhileADispatchRuns)
{
    KUVCallbackManager manager;
    std::string log;
    KUVSubscription first = 0;
    KUVSubscription second = 0;
    first = manager.Subscribe("SelectEvt", nullptr, Do([&] {
                                  log += 'a';
                                  manager.Unsubscribe(first);
                                  manager.Unsubscribe(second);
                                  log += 'A';
                              }));
    second = manager.Subscribe("SelectEvt", nullptr, Write(log, 'b'));
    manager.Subscribe("SelectEvt", nullptr, Write(log, 'c'));
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "aAc");
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "aAcc");
}

TEST(KUVCallbackManager, DispatchesMayNest)
{
    KUVCallbackManager manager;
    std::string log;
    manager.Subscribe("OuterEvt", nullptr, Do([&] {
                          log += '(';
                          manager.DispatchCallbacks("InnerEvt", nullptr, nullptr);
                          log += ')';
                      }));
    manager.Subscribe("InnerEvt", nullptr, Write(log, 'i'));
    manager.DispatchCallbacks("OuterEvt", nullptr, nullptr);
    EXPECT_EQ(log, "(i)");
}

TEST(KUVCallbackManager, AListenerMayDestroyTheManager)
{
    auto manager = std::make_unique<KUVCallbackManager>();
    std::string log;
    manager->Subscribe("SelectEvt", nullptr, Do([&] {
                           log += 'a';
                           manager.reset();
                           log += 'A';
                       }));
    manager->Subscribe("SelectEvt", nullptr, Write(log, 'b'));
    manager->DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "aA") << "the dispatch ends with its manager";
    EXPECT_EQ(manager, nullptr);
}

TEST(KUVCallbackManager, AListenerMayReleaseTheCommandThatSends)
{
    KUVCommand* const command = new KUVCommand(nullptr, "Command");
    std::string log;
    KUVCallbackManager* const manager = command->GetCallbackManager();
    manager->Subscribe("SelectEvt", command, Do([&] {
                           log += 'a';
                           command->Release();
                       }));
    manager->Subscribe("SelectEvt", command, Write(log, 'b'));
    manager->DispatchCallbacks("SelectEvt", nullptr, command);
    EXPECT_EQ(log, "a");
}

TEST(KUVCallbackManager, AListenerMayDestroyTheManagerFromANestedDispatch)
{
    auto manager = std::make_unique<KUVCallbackManager>();
    std::string log;
    manager->Subscribe("OuterEvt", nullptr, Do([&] {
                           log += '(';
                           manager->DispatchCallbacks("InnerEvt", nullptr, nullptr);
                           log += ')';
                       }));
    manager->Subscribe("OuterEvt", nullptr, Write(log, 'o'));
    manager->Subscribe("InnerEvt", nullptr, Do([&manager] { manager.reset(); }));
    manager->DispatchCallbacks("OuterEvt", nullptr, nullptr);
    EXPECT_EQ(log, "()");
}

TEST(KUVCallbackManager, AnExceptionOfAListenerLeavesTheManagerInOrder)
{
    KUVCallbackManager manager;
    std::string log;
    KUVSubscription throwing = 0;
    const auto captured = std::make_shared<int>(0);
    throwing = manager.Subscribe("SelectEvt", nullptr, Do([&manager, &throwing, captured] {
                                     manager.Unsubscribe(throwing);
                                     throw std::runtime_error("listener");
                                 }));
    manager.Subscribe("SelectEvt", nullptr, Write(log, 'b'));
    EXPECT_THROW(manager.DispatchCallbacks("SelectEvt", nullptr, nullptr), std::runtime_error);
    EXPECT_EQ(captured.use_count(), 1) << "the ended subscription is gone";
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "b");
}

TEST(KUVCallbackManager, WhatACallbackCapturedMayUseTheManagerWhenItDies)
{
    struct Unsubscriber {
        explicit Unsubscriber(KUVCallbackManager& unsubscribed) : manager(unsubscribed) {}
        Unsubscriber(const Unsubscriber&) = delete;
        Unsubscriber& operator=(const Unsubscriber&) = delete;
        ~Unsubscriber() { manager.Unsubscribe(subscription); }
        KUVCallbackManager& manager;
        KUVSubscription subscription = 0;
    };
    KUVCallbackManager manager;
    std::string log;
    auto captured = std::make_shared<Unsubscriber>(manager);
    captured->subscription = manager.Subscribe("SelectEvt", nullptr, Write(log, 'a'));
    const KUVSubscription holder =
        manager.Subscribe("SelectEvt", nullptr, Do([captured] { (void)captured; }));
    captured.reset();
    manager.Unsubscribe(holder);
    manager.DispatchCallbacks("SelectEvt", nullptr, nullptr);
    EXPECT_EQ(log, "");
}

TEST(KUVCallbackManager, WhatACallbackCapturedMayUnsubscribeWhileTheManagerDies)
{
    struct Unsubscriber {
        explicit Unsubscriber(KUVCallbackManager& unsubscribed) : manager(unsubscribed) {}
        Unsubscriber(const Unsubscriber&) = delete;
        Unsubscriber& operator=(const Unsubscriber&) = delete;
        ~Unsubscriber() { manager.Unsubscribe(1); }
        KUVCallbackManager& manager;
    };
    auto manager = std::make_unique<KUVCallbackManager>();
    manager->Subscribe(
        "SelectEvt", nullptr,
        Do([captured = std::make_shared<Unsubscriber>(*manager)] { (void)captured; }));
    manager.reset();
}

TEST(KUVCallbackManager, WithoutMemoryNothingIsSubscribedAndDispatchesGoOn)
{
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        KUVCallbackManager manager;
        int calls = 0;
        KUVSubscription first = 0;
        first = manager.Subscribe("A name that is too long for a short string", nullptr, Do([&] {
                                      ++calls;
                                      manager.Unsubscribe(first);
                                  }));
        int subscribed = 1;
        try {
            manager.Subscribe("A name that is too long for a short string", nullptr,
                              Do([&calls] { ++calls; }));
            ++subscribed;
        } catch (const std::bad_alloc&) {
            // Counted as it stands: the first listener goes on alone.
        }
        manager.DispatchCallbacks("A name that is too long for a short string", nullptr, nullptr);
        const support::UncountedAllocations uncounted;
        EXPECT_EQ(calls, subscribed);
    });
    EXPECT_GE(failures, 4U);
}
