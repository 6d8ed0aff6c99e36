// A small host: it loads the module, gives it a tree, has it drawn, and looks at what was drawn.

#include "KUV2D.h"
#include "KUVCommand.h"
#include "VisDataTree.h"
#include "VisTreeMapLayout.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

int failures = 0;

void Check(bool holds, const char* claim)
{
    std::printf("%s: %s\n", holds ? "ok" : "WRONG", claim);
    failures += holds ? 0 : 1;
}

/// Eight pixels a character, whatever the size.
class FixedFont : public KUVCharacterFont {
public:
    int GetFontIndex(float) override { return 0; }
    void GetStringSize(const KUVUnicodeString& text, int* width, int* height, int* descent,
                       int) override
    {
        if (width)
            *width = 8 * static_cast<int>(text.GetLength());
        if (height)
            *height = 14;
        if (descent)
            *descent = 3;
    }
};

/// What stands in a bag and in the bags below it.
struct Drawn {
    std::vector<const KUV2DPolygonRep*> backgrounds;
    std::vector<const KUV2DImagePixelRep*> images;
    std::vector<std::string> labels;

    void Collect(const KUVRep* rep)
    {
        if (const auto* polygon = dynamic_cast<const KUV2DPolygonRep*>(rep)) {
            if (polygon->IsFilled())
                backgrounds.push_back(polygon);
        } else if (const auto* image = dynamic_cast<const KUV2DImagePixelRep*>(rep)) {
            images.push_back(image);
        } else if (const auto* text = dynamic_cast<const KUV2DAnnotationTextRep*>(rep)) {
            labels.push_back(text->GetText().GetUtf8());
        }
        const list<KUVRep>* const children = rep->GetChildren();
        for (int i = 0; children && i < children->Count(); ++i)
            Collect((*children)[i]);
    }
};

float WidthOf(const KUV2DPolygonRep& polygon)
{
    return polygon.GetPoints()[2] - polygon.GetPoints()[0];
}

VisDataTree* AddLeaf(VisDataTree* parent, const char* label)
{
    VisDataTree* const leaf = new VisDataTree(nullptr, label, "");
    parent->InsertChild(leaf, /*resetCaches=*/1);
    leaf->Release();
    return leaf;
}

void DrawPump(KUVCommand& command, FixedFont& font)
{
    //    1        48.06  50.06      97.12
    //    +-----------+   +-----------+  35
    //    |  Housing  |   |   Rotor   |
    //    +-----------+   +-----------+  20
    //    +-----------+                  18
    //    |   Cover   |
    //    +-----------+                   3
    VisDataTree* const root = new VisDataTree(nullptr, "Pump", "");
    AddLeaf(root, "Housing");
    VisDataTree* const rotor = AddLeaf(root, "Rotor");
    AddLeaf(root, "Cover");

    KUV2DBagRep* const bag = KUV2DBagRep::CreateRep();
    VisTreeMapLayout* const layout = VisTreeMapLayout::CreateLayout(&command, root, bag);
    Check(layout != nullptr, "the module makes a layout under this host's command");

    int selections = 0;
    layout->GetCallbackManager()->Subscribe(
        VisTreeSpaceFillingLayout::ON_SELECT_NODE(), layout,
        [&](const char*, KUVNotification* notification, KUVBaseUnknown*) {
            selections += notification != nullptr;
        });
    layout->Draw({0.0f, 0.0f}, {100.0f, 50.0f}, &font, 1.0f);

    Drawn drawn;
    drawn.Collect(bag);
    Check(drawn.backgrounds.size() == 4, "four nodes have a background: the root and three cells");
    int cells = 0;
    for (const KUV2DPolygonRep* const background : drawn.backgrounds)
        cells += std::fabs(WidthOf(*background) - 47.06f) < 0.005f;
    Check(cells == 3, "three of them are cells of width 47.06");
    Check(drawn.labels.size() == 4, "four labels are drawn");
    Check(selections == 1, "drawing tells this host's listener which node is selected");

    layout->SetCurrentSelection(rotor);
    Check(layout->GetCurrentSelection() == rotor && selections == 2, "a selection arrives");

    layout->Release();
    const list<KUVRep>* const left = bag->GetChildren();
    Check(left->Count() == 0, "a released layout leaves nothing in the bag");
    Check(bag->GetReferenceCount() == 1 && root->GetReferenceCount() == 1,
          "a released layout gives back the bag and the tree");
    bag->Release();
    root->Release();
}

}  // namespace

int main()
{
    KUVCommand* const command = new KUVCommand(nullptr, "Consumer");
    FixedFont* const font = new FixedFont;
    DrawPump(*command, *font);
    font->Release();
    command->Release();
    return failures == 0 ? 0 : 1;
}
