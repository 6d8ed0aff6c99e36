#include "core/Introspection.h"
#include "support/Allocations.h"

#include "KUVWidgets.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// A widget with one text.
class TextWidget : public KUVVidCtl {
public:
    using KUVVidCtl::KUVVidCtl;
    KUVUnicodeString text = "tip";
};

KUVUnicodeString GetText(const KUVBaseUnknown* object)
{
    return static_cast<const TextWidget*>(object)->text;
}

void SetText(KUVBaseUnknown* object, const KUVUnicodeString& value)
{
    static_cast<TextWidget*>(object)->text = value;
}

KUVBaseUnknown* MakeWidget() { return new TextWidget(nullptr, "Made"); }

KUVSYPProperty TextProperty()
{
    KUVSYPProperty property;
    property.name = "Text";
    property.typeName = "KUVUnicodeString";
    property.category = "Data";
    property.description = "What is shown";
    property.getter = &GetText;
    property.setter = &SetText;
    return property;
}

KUVSYPIntrospectableAdapter* AdapterOf(KUVVidCtl& widget)
{
    const KUVInterfacePtr<KUVISYPIntrospectable> introspectable(&widget);
    return static_cast<KUVSYPIntrospectableAdapter*>(introspectable->GetAdapter(1));
}

}  // namespace

TEST(KUVVidCtl, RemembersParentNameAndStyle)
{
    KUVCommand parent(nullptr, "Parent");
    KUVVidCtl widget(&parent, "Tooltip");
    EXPECT_EQ(widget.GetParentCommand(), &parent);
    EXPECT_EQ(parent.GetReferenceCount(), 1U);
    EXPECT_STREQ(widget.GetWidgetName().GetText(), "Tooltip");
    EXPECT_STREQ(widget.GetTemplateName().GetText(), "");
    widget.SetTemplateName("Default");
    widget.SetCustomStyle("VisDataTreeTooltipWidgets.sypstyle", "Default", "");
    EXPECT_STREQ(widget.GetTemplateName().GetText(), "Default");
    EXPECT_STREQ(widget.GetStyleFile().GetText(), "VisDataTreeTooltipWidgets.sypstyle");
    EXPECT_STREQ(widget.GetStyleTemplateName().GetText(), "Default");
    EXPECT_STREQ(widget.IsA(), "KUVVidCtl");
    EXPECT_EQ(widget.GetMetaObject(), KUVVidCtl::MetaObject());
    EXPECT_EQ(widget.IsAKindOf("KUVEventSubscriber"), 1);
    EXPECT_EQ(widget.GetCallbackManager(), nullptr);
}

TEST(KUVVidCtl, CountsTheUpdatesOfItsTemplateData)
{
    KUVVidCtl widget(nullptr, "Tooltip");
    EXPECT_EQ(widget.GetTemplateUpdateCount(), 0U);
    widget.TemplateDataUpdated();
    widget.TemplateDataUpdated();
    EXPECT_EQ(widget.GetTemplateUpdateCount(), 2U);
}

TEST(KUVVidCtl, AnswersForItsIntrospection)
{
    KUVVidCtl widget(nullptr, "Tooltip");
    {
        const KUVInterfacePtr<KUVISYPIntrospectable> introspectable(&widget);
        ASSERT_TRUE(introspectable);
        EXPECT_EQ(widget.GetReferenceCount(), 2U);
        EXPECT_EQ(introspectable->GetAdapter(0), nullptr) << "there is none yet";
        KUVSYPAdapter* const adapter = introspectable->GetAdapter(1);
        ASSERT_NE(adapter, nullptr);
        EXPECT_EQ(introspectable->GetAdapter(0), adapter);
        EXPECT_EQ(introspectable->GetAdapter(1), adapter);
    }
    EXPECT_EQ(widget.GetReferenceCount(), 1U);
    void* result = &widget;
    EXPECT_EQ(widget.QueryInterface("KUVIAlias", &result), KUV_FAIL);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(widget.QueryInterface("KUVISYPIntrospectable", nullptr), KUV_FAIL);
}

TEST(KUVVidCtl, WithoutMemoryThereIsNoIntrospection)
{
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        KUVVidCtl widget(nullptr, "Tooltip");
        const KUVInterfacePtr<KUVISYPIntrospectable> introspectable(&widget);
        if (introspectable)
            introspectable->GetAdapter(1);
    });
    EXPECT_GE(failures, 2U);
}

TEST(KUVSYPIntrospectableAdapter, TellsItsListenersWhichPropertyWasModified)
{
    KUVVidCtl widget(nullptr, "Tooltip");
    KUVSYPIntrospectableAdapter* const adapter = AdapterOf(widget);
    std::string log;
    const KUVSubscription first =
        adapter->SubscribeModifyProperty([&log](const char* name) { log += name; });
    adapter->SubscribeModifyProperty([&log](const char* /*name*/) { log += '!'; });
    adapter->DispatchModifyProperty("Text", 1);
    EXPECT_EQ(log, "Text!");
    adapter->Unsubscribe(first);
    adapter->DispatchModifyProperty("Text", 1);
    EXPECT_EQ(log, "Text!!");
}

TEST(KUVSYPIntrospectableAdapter, NothingIsSaidWithoutNameOrModification)
{
    KUVVidCtl widget(nullptr, "Tooltip");
    KUVSYPIntrospectableAdapter* const adapter = AdapterOf(widget);
    int calls = 0;
    adapter->SubscribeModifyProperty([&calls](const char* /*name*/) { ++calls; });
    EXPECT_EQ(adapter->SubscribeModifyProperty(nullptr), 0U);
    adapter->DispatchModifyProperty(nullptr, 1);
    adapter->DispatchModifyProperty("Text", 0);
    EXPECT_EQ(calls, 0);
}

TEST(KUVSYPIntrospectableAdapter, AListenerMayDestroyTheWidget)
{
    KUVVidCtl* const widget = new KUVVidCtl(nullptr, "Tooltip");
    KUVSYPIntrospectableAdapter* const adapter = AdapterOf(*widget);
    adapter->SubscribeModifyProperty([widget](const char* /*name*/) { widget->Release(); });
    adapter->DispatchModifyProperty("Text", 1);
}

TEST(KUVSYPMetaClassBuilder, MakesAClassKnownWithItsProperties)
{
    KUVSYPMetaClassBuilder builder;
    builder.SetNames("WidgetsTest.Text", nullptr, "");
    const KUVSYPProperty property = TextProperty();
    builder.SetProperties_KUVUnicodeString(1, &property);
    EXPECT_EQ(builder.CreateMetaClass(&MakeWidget, "KUVVidCtl"), KUV_OK);
    EXPECT_EQ(builder.GetClassNameText(), "WidgetsTest.Text");
    EXPECT_EQ(builder.GetBaseClassName(), "KUVVidCtl");
    EXPECT_EQ(builder.GetFactory(), &MakeWidget);

    const core::IntrospectedClass* const known = core::FindIntrospectedClass("WidgetsTest.Text");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->baseName, "KUVVidCtl");
    const core::IntrospectedProperty* const text = known->FindProperty("Text");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->typeName, "KUVUnicodeString");
    EXPECT_EQ(text->category, "Data");
    EXPECT_EQ(text->description, "What is shown");
    EXPECT_TRUE(text->readable);
    EXPECT_TRUE(text->bindable);
    EXPECT_EQ(known->FindProperty("Size"), nullptr);

    KUVBaseUnknown* const made = known->factory();
    EXPECT_EQ(text->getter(made), KUVUnicodeString("tip"));
    text->setter(made, "other");
    EXPECT_EQ(text->getter(made), KUVUnicodeString("other"));
    made->Release();
}

TEST(KUVSYPMetaClassBuilder, CopiesItsTexts)
{
    std::string name = "Text";
    KUVSYPProperty property = TextProperty();
    property.name = name.c_str();
    property.category = nullptr;
    KUVSYPMetaClassBuilder builder;
    builder.SetProperties_KUVUnicodeString(1, &property);
    name.assign(name.size(), 'x');
    ASSERT_EQ(builder.GetProperties().size(), 1U);
    EXPECT_STREQ(builder.GetProperties()[0].name, "Text");
    EXPECT_STREQ(builder.GetProperties()[0].category, "");
}

TEST(KUVSYPMetaClassBuilder, NoEntriesDeclareNone)
{
    const KUVSYPProperty property = TextProperty();
    KUVSYPMetaClassBuilder builder;
    builder.SetProperties_KUVUnicodeString(1, &property);
    builder.SetProperties_KUVUnicodeString(1, nullptr);
    EXPECT_TRUE(builder.GetProperties().empty());
    builder.SetProperties_KUVUnicodeString(0, &property);
    EXPECT_TRUE(builder.GetProperties().empty());
    builder.SetProperties_KUVUnicodeString(-1, &property);
    EXPECT_TRUE(builder.GetProperties().empty());
}

TEST(KUVSYPMetaClassBuilder, FailsWithoutNameAndForAClassThatIsKnown)
{
    KUVSYPMetaClassBuilder builder;
    EXPECT_EQ(builder.CreateMetaClass(&MakeWidget, "KUVVidCtl"), KUV_FAIL);
    builder.SetNames("WidgetsTest.Twice", "", "");
    EXPECT_EQ(builder.CreateMetaClass(nullptr, nullptr), KUV_OK);
    EXPECT_EQ(builder.CreateMetaClass(&MakeWidget, "KUVVidCtl"), KUV_FAIL);
    EXPECT_EQ(core::FindIntrospectedClass("WidgetsTest.Twice")->factory, nullptr);
    EXPECT_EQ(core::FindIntrospectedClass("WidgetsTest.Absent"), nullptr);
}

TEST(KUVSYPMetaClassBuilder, PropertiesAreInheritedEvenInACircleOfBases)
{
    const KUVSYPProperty property = TextProperty();
    KUVSYPMetaClassBuilder base;
    base.SetNames("WidgetsTest.Base", "", "");
    base.SetProperties_KUVUnicodeString(1, &property);
    ASSERT_EQ(base.CreateMetaClass(nullptr, "WidgetsTest.Derived"), KUV_OK);
    KUVSYPMetaClassBuilder derived;
    derived.SetNames("WidgetsTest.Derived", "", "");
    ASSERT_EQ(derived.CreateMetaClass(nullptr, "WidgetsTest.Base"), KUV_OK);
    const core::IntrospectedClass* const known = core::FindIntrospectedClass("WidgetsTest.Derived");
    EXPECT_NE(known->FindProperty("Text"), nullptr);
    EXPECT_EQ(known->FindProperty("Size"), nullptr);
}
