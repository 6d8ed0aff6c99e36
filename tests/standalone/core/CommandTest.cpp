#include "support/Allocations.h"

#include "KUVCommand.h"

#include <gtest/gtest.h>

namespace {

class Listener : public KUVEventSubscriber {};

}  // namespace

TEST(KUVCommand, KnowsItsNameParentAndChildren)
{
    KUVCommand parent(nullptr, "Parent");
    const KUVCommand child(&parent, "Child");
    EXPECT_STREQ(child.GetCommandName().GetText(), "Child");
    EXPECT_EQ(child.GetParentCommand(), &parent);
    ASSERT_EQ(parent.GetChildCommands().size(), 1U);
    EXPECT_EQ(parent.GetChildCommands().front(), &child);
    EXPECT_EQ(parent.GetParentCommand(), nullptr);
}

TEST(KUVCommand, AParentHoldsNoReferenceOnItsChildren)
{
    KUVCommand parent(nullptr, "Parent");
    KUVCommand* const child = new KUVCommand(&parent, "Child");
    EXPECT_EQ(child->GetReferenceCount(), 1U);
    EXPECT_EQ(parent.GetReferenceCount(), 1U);
    child->Release();
    EXPECT_TRUE(parent.GetChildCommands().empty()) << "a command that dies leaves the tree";
}

TEST(KUVCommand, ChildrenOutliveTheirParentWithoutOne)
{
    KUVCommand* const parent = new KUVCommand(nullptr, "Parent");
    KUVCommand* const first = new KUVCommand(parent, "First");
    KUVCommand* const second = new KUVCommand(parent, "Second");
    parent->Release();
    EXPECT_EQ(first->GetParentCommand(), nullptr);
    EXPECT_EQ(second->GetParentCommand(), nullptr);
    first->Release();
    second->Release();
}

TEST(KUVCommand, SiblingsKeepTheirOrderWhenOneDies)
{
    KUVCommand parent(nullptr, "Parent");
    const KUVCommand first(&parent, "First");
    KUVCommand* const second = new KUVCommand(&parent, "Second");
    const KUVCommand third(&parent, "Third");
    second->Release();
    ASSERT_EQ(parent.GetChildCommands().size(), 2U);
    EXPECT_EQ(parent.GetChildCommands()[0], &first);
    EXPECT_EQ(parent.GetChildCommands()[1], &third);
}

TEST(KUVCommand, MakesItsCallbackManagerOnce)
{
    KUVCommand command(nullptr, "Command");
    KUVCallbackManager* const manager = command.GetCallbackManager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(command.GetCallbackManager(), manager);
}

TEST(KUVCommand, HasNoCallbackManagerWithoutMemoryButTriesAgain)
{
    KUVCommand command(nullptr, "Command");
    KUVCallbackManager* manager = nullptr;
    for (std::size_t failing = 1; failing <= 2; ++failing) {
        const support::FailingAllocation allocation(failing);
        manager = command.GetCallbackManager();
        EXPECT_EQ(manager, nullptr);
    }
    EXPECT_NE(command.GetCallbackManager(), nullptr);
}

TEST(KUVCommand, ASubscriberThatIsNoCommandHasNoCallbackManager)
{
    Listener listener;
    EXPECT_EQ(listener.GetCallbackManager(), nullptr);
}

TEST(KUVCommand, TheClassesStandInTheirHierarchy)
{
    EXPECT_EQ(KUVCommand::MetaObject()->GetBase(), KUVEventSubscriber::MetaObject());
    EXPECT_EQ(KUVEventSubscriber::MetaObject()->GetBase(), KUVBaseUnknown::MetaObject());
    EXPECT_EQ(KUVNotification::MetaObject()->GetBase(), KUVBaseUnknown::MetaObject());
    const KUVNotification notification;
    EXPECT_STREQ(notification.IsA(), "KUVNotification");
    EXPECT_EQ(notification.IsAKindOf("KUVBaseUnknown"), 1);
}
