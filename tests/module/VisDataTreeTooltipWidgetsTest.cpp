#include "VisDataTreeTooltipWidgets.h"

#include "private/Reference.h"

#include "KUVObjectModel.h"
#include "KUVWidgets.h"

#include <gtest/gtest.h>

TEST(VisDataTreeTooltipWidgets, LoadingTheModuleRegistersIt)
{
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("KUVDataViz"), 1);
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("KUVDataViz2"), 0);
}

TEST(VisDataTreeTooltipWidgets, LoadingTheModuleRegistersTheTooltipsBuilder)
{
    const KUVBuilderFactory factory =
        KUVFillDictionary::Find("VisDataTreeTooltipWidgetsSYPMetaClassBuilder");
    EXPECT_EQ(factory, &fctCreateVisDataTreeTooltipWidgetsSYPMetaClassBuilder);
}

TEST(VisDataTreeTooltipWidgets, TheBuilderNamesItsClassAndDeclaresNothingYet)
{
    const auto made = VisReference<KUVBaseUnknown>::Adopt(
        fctCreateVisDataTreeTooltipWidgetsSYPMetaClassBuilder());
    const auto* const builder = dynamic_cast<KUVSYPMetaClassBuilder*>(made.Get());
    ASSERT_NE(builder, nullptr);
    EXPECT_EQ(builder->GetClassNameText(), "VisDataTreeTooltipWidgets");
    EXPECT_TRUE(builder->GetProperties().empty());
    EXPECT_EQ(builder->GetFactory(), nullptr);
}
