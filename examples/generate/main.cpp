/// Writes the example assembly: a gear pump with its coupling on a base plate. Usage:
/// generate_example FILE
///
/// The drive axis is x at height 0 of the drawing; the pump's second gear runs below it. The names
/// mix the languages that such files come in.
#include "Shapes.h"

#include <APIHeaderSection_MakeHeader.hxx>
#include <IFSelect_ReturnStatus.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <STEPControl_StepModelType.hxx>
#include <StepData_StepModel.hxx>
#include <TCollection_ExtendedString.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <iostream>
#include <string>

namespace {

using example::CENTRE_DISTANCE;
using example::GEAR_WIDTH;

constexpr double PI = 3.14159265358979323846;
constexpr double UPPER = CENTRE_DISTANCE / 2;
constexpr double LOWER = -CENTRE_DISTANCE / 2;

// Colours as red, green, blue of 255.
struct Paint {
    int red;
    int green;
    int blue;
};
constexpr Paint CAST_IRON{96, 125, 139};
constexpr Paint STEEL{176, 182, 188};
constexpr Paint BLACK_STEEL{66, 66, 70};
constexpr Paint BRONZE{205, 144, 71};
constexpr Paint BRASS{222, 184, 92};
constexpr Paint RUBBER{38, 38, 42};
constexpr Paint RED_PLASTIC{196, 54, 48};
constexpr Paint BLUE_PAINT{32, 96, 160};

gp_Trsf At(double x, double y, double z)
{
    gp_Trsf map;
    map.SetTranslation(gp_Vec(x, y, z));
    return map;
}

/// Moved to the place after a turn about the part's own x axis.
gp_Trsf AtTurned(double x, double y, double z, double degrees)
{
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(1, 0, 0)), degrees * PI / 180);
    return At(x, y, z) * turn;
}

/// Moved to the place, the part's x axis along `axis`.
gp_Trsf Along(double x, double y, double z, const gp_Dir& axis)
{
    const gp_Dir side = std::abs(axis.X()) > 0.9 ? gp_Dir(0, 1, 0) : gp_Dir(1, 0, 0);
    const gp_Ax3 target(gp_Pnt(x, y, z), axis.Crossed(side), axis);
    const gp_Ax3 source(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1), gp_Dir(1, 0, 0));
    gp_Trsf map;
    map.SetDisplacement(source, target);
    return map;
}

class Assembler {
public:
    Assembler()
    {
        XCAFDoc_ShapeTool::SetAutoNaming(Standard_False);
        XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document_);
        shapes_ = XCAFDoc_DocumentTool::ShapeTool(document_->Main());
        colours_ = XCAFDoc_DocumentTool::ColorTool(document_->Main());
    }

    TDF_Label Part(const std::string& name, const TopoDS_Shape& shape, const Paint& paint)
    {
        const TDF_Label label = shapes_->AddShape(shape, /*makeAssembly=*/Standard_False);
        Name(label, name);
        const Quantity_Color colour(paint.red / 255.0, paint.green / 255.0, paint.blue / 255.0,
                                    Quantity_TOC_sRGB);
        colours_->SetColor(label, colour, XCAFDoc_ColorSurf);
        return label;
    }

    TDF_Label Assembly(const std::string& name)
    {
        const TDF_Label label = shapes_->NewShape();
        Name(label, name);
        return label;
    }

    void Add(const TDF_Label& assembly, const TDF_Label& component, const std::string& name,
             const gp_Trsf& place)
    {
        Name(shapes_->AddComponent(assembly, component, TopLoc_Location(place)), name);
    }

    bool Write(const char* path)
    {
        shapes_->UpdateAssemblies();
        STEPCAFControl_Writer writer;
        // Readers make the curves on the surfaces again; without them the file is half as long.
        Interface_Static::SetIVal("write.surfacecurve.mode", 0);
        writer.SetColorMode(Standard_True);
        writer.SetNameMode(Standard_True);
        if (!writer.Transfer(document_, STEPControl_AsIs))
            return false;
        // No day and no machine: writing again changes at most the order of the styles.
        APIHeaderSection_MakeHeader header(writer.ChangeWriter().Model());
        header.SetName(Text("example.step"));
        header.SetTimeStamp(Text("2026-01-01T00:00:00"));
        header.SetAuthorValue(1, Text("KUVDataViz"));
        header.SetOrganizationValue(1, Text("KUVDataViz"));
        header.SetOriginatingSystem(Text("examples/generate"));
        header.SetAuthorisation(Text(""));
        header.SetDescriptionValue(1, Text("Gear pump on a base plate"));
        header.Apply(writer.ChangeWriter().Model());
        return writer.Write(path) == IFSelect_RetDone;
    }

private:
    static Handle(TCollection_HAsciiString) Text(const char* text)
    {
        return new TCollection_HAsciiString(text);
    }

    static void Name(const TDF_Label& label, const std::string& name)
    {
        TDataStd_Name::Set(label, TCollection_ExtendedString(name.c_str(), Standard_True));
    }

    Handle(TDocStd_Document) document_;
    Handle(XCAFDoc_ShapeTool) shapes_;
    Handle(XCAFDoc_ColorTool) colours_;
};

/// Screw with washer: the sub-assembly that occurs most.
TDF_Label ScrewSet(Assembler& to)
{
    const TDF_Label set = to.Assembly("Screw set M6×70");
    const TDF_Label screw = to.Part("Socket screw M6×70", example::SocketScrew(6, 70), BLACK_STEEL);
    const TDF_Label washer = to.Part("Washer 6", example::Washer(6), STEEL);
    to.Add(set, screw, "Screw", At(0, 0, 0));
    to.Add(set, washer, "Washer", At(0, 0, 0));
    return set;
}

TDF_Label Housing(Assembler& to)
{
    const TDF_Label housing = to.Assembly("Gehäuse");
    const TDF_Label body = to.Part("Pump body", example::PumpBody(), CAST_IRON);
    const TDF_Label front = to.Part("Front cover", example::FrontCover(), CAST_IRON);
    const TDF_Label rear = to.Part("Rear cover", example::RearCover(), CAST_IRON);
    const TDF_Label seal = to.Part("Joint d'étanchéité", example::FlatSeal(), RUBBER);
    const TDF_Label bushing = to.Part("Lagerbüchse Ø14", example::Bushing(), BRONZE);
    const TDF_Label pin = to.Part("Dowel pin 5×20", example::DowelPin(), STEEL);
    to.Add(housing, body, "Body", At(0, 0, 0));
    to.Add(housing, front, "Front cover", At(-20, 0, 0));
    to.Add(housing, rear, "Rear cover", At(GEAR_WIDTH, 0, 0));
    to.Add(housing, seal, "Front seal", At(0, 0, 0));
    to.Add(housing, seal, "Rear seal", At(GEAR_WIDTH, 0, 0));
    to.Add(housing, bushing, "Bushing, drive side, upper", At(-14, 0, UPPER));
    to.Add(housing, bushing, "Bushing, drive side, lower", At(-14, 0, LOWER));
    to.Add(housing, bushing, "Bushing, rear, upper", At(GEAR_WIDTH, 0, UPPER));
    to.Add(housing, bushing, "Bushing, rear, lower", At(GEAR_WIDTH, 0, LOWER));
    to.Add(housing, pin, "Pin, upper", At(14, 0, UPPER + 31));
    to.Add(housing, pin, "Pin, lower", At(14, 0, LOWER - 31));

    const TDF_Label screws = ScrewSet(to);
    int number = 1;
    for (const double y : {-31.0, 31.0}) {
        for (const double z : {-31.5, -10.5, 10.5, 31.5})
            to.Add(housing, screws, "Screw set " + std::to_string(number++),
                   Along(43.2, y, z, gp_Dir(-1, 0, 0)));
    }
    return housing;
}

TDF_Label GearSets(Assembler& to)
{
    const TDF_Label gears = to.Assembly("Gear set");
    const TDF_Label drive = to.Assembly("Drive line");
    const TDF_Label idler = to.Assembly("Idler line");
    const TDF_Label gear = to.Part("Gear, 14 teeth, module 3", example::Gear(), STEEL);
    const TDF_Label key = to.Part("Parallel key 5×18", example::ParallelKey(18), STEEL);
    const TDF_Label driveShaft = to.Part("Antriebswelle Ø14", example::DriveShaft(), STEEL);
    const TDF_Label idlerShaft = to.Part("Idler shaft", example::IdlerShaft(), STEEL);
    const TDF_Label ring = to.Part("Retaining ring", example::RetainingRing(), BLACK_STEEL);
    const TDF_Label seal = to.Part("Shaft seal 14×28×7", example::ShaftSeal(), RUBBER);
    to.Add(drive, driveShaft, "Shaft", At(0, 0, 0));
    to.Add(drive, gear, "Drive gear", At(0, 0, 0));
    to.Add(drive, key, "Key of the gear", At(3, 0, 4.5));
    to.Add(drive, key, "Key of the coupling", At(-58, 0, 4.5));
    to.Add(drive, ring, "Retaining ring", At(-36, 0, 0));
    to.Add(drive, seal, "Shaft seal", At(-34, 0, 0));
    to.Add(idler, idlerShaft, "Shaft", At(0, 0, 0));
    to.Add(idler, gear, "Idler gear", AtTurned(0, 0, 0, 180.0 / 14));
    to.Add(idler, key, "Key", At(3, 0, 4.5));
    to.Add(gears, drive, "Drive line", At(0, 0, UPPER));
    to.Add(gears, idler, "Idler line", At(0, 0, LOWER));
    return gears;
}

TDF_Label ReliefValve(Assembler& to)
{
    const TDF_Label valve = to.Assembly("Überdruckventil");
    const TDF_Label cartridge = to.Assembly("Valve cartridge");
    const TDF_Label ball = to.Part("Ball Ø10", example::ValveBall(), STEEL);
    const TDF_Label spring = to.Part("Ressort", example::ValveSpring(), BLUE_PAINT);
    const TDF_Label screw = to.Part("Adjusting screw", example::AdjustingScrew(), BRASS);
    to.Add(cartridge, ball, "Ball", At(0, 0, 0));
    to.Add(cartridge, spring, "Spring", At(4, 0, 0));
    to.Add(cartridge, screw, "Screw", At(24, 0, 0));
    const TDF_Label body = to.Part("Valve body", example::ValveBody(), BRASS);
    const TDF_Label nut = to.Part("Écrou M6", example::HexNut(6), STEEL);
    const TDF_Label cap = to.Part("Cap", example::ValveCap(), RED_PLASTIC);
    to.Add(valve, body, "Body", At(0, 0, 0));
    to.Add(valve, cartridge, "Cartridge", At(5, 0, 0));
    to.Add(valve, nut, "Lock nut", At(41, 0, 0));
    to.Add(valve, cap, "Cap", At(38, 0, 0));
    return valve;
}

TDF_Label Fitting(Assembler& to)
{
    const TDF_Label fitting = to.Assembly("Fitting");
    const TDF_Label nipple = to.Part("Nipple", example::FittingNipple(), BRASS);
    const TDF_Label nut = to.Part("Union nut", example::UnionNut(), BRASS);
    const TDF_Label ring = to.Part("Sealing ring", example::SealingRing(), BRONZE);
    to.Add(fitting, nipple, "Nipple", At(0, 0, 0));
    to.Add(fitting, nut, "Union nut", At(11, 0, 0));
    to.Add(fitting, ring, "Sealing ring", At(-1.5, 0, 0));
    return fitting;
}

TDF_Label Pump(Assembler& to)
{
    const TDF_Label pump = to.Assembly("Gear pump");
    to.Add(pump, Housing(to), "Housing", At(0, 0, 0));
    to.Add(pump, GearSets(to), "Gears", At(0, 0, 0));
    to.Add(pump, ReliefValve(to), "Relief valve", Along(42, 0, 0, gp_Dir(1, 0, 0)));
    const TDF_Label fitting = Fitting(to);
    to.Add(pump, fitting, "Inlet", Along(12, -53.5, 0, gp_Dir(0, -1, 0)));
    to.Add(pump, fitting, "Outlet", Along(12, 53.5, 0, gp_Dir(0, 1, 0)));
    return pump;
}

TDF_Label Coupling(Assembler& to)
{
    const TDF_Label coupling = to.Assembly("Kupplung");
    const TDF_Label half = to.Assembly("Coupling half");
    const TDF_Label hub = to.Part("Hub", example::CouplingHub(), STEEL);
    const TDF_Label screw = to.Part("Set screw M5×7", example::SetScrew(), BLACK_STEEL);
    const TDF_Label spider = to.Part("Spider", example::CouplingSpider(), RED_PLASTIC);
    to.Add(half, hub, "Hub", At(0, 0, 0));
    to.Add(half, screw, "Set screw", Along(7, 0, -16, gp_Dir(0, 0, 1)));
    to.Add(coupling, half, "Motor side", At(-31, 0, 0));
    to.Add(coupling, half, "Pump side", Along(22, 0, 0, gp_Dir(-1, 0, 0)));
    to.Add(coupling, spider, "Spider", At(-9, 0, 0));
    return coupling;
}

TDF_Label Frame(Assembler& to)
{
    const TDF_Label frame = to.Assembly("Frame");
    const TDF_Label joint = to.Assembly("Bolted joint M8");
    const TDF_Label bolt = to.Part("Hex bolt M8×35", example::HexBolt(8, 35), STEEL);
    const TDF_Label nut = to.Part("Écrou M8", example::HexNut(8), STEEL);
    const TDF_Label washer = to.Part("Washer 8", example::Washer(8), STEEL);
    to.Add(joint, bolt, "Bolt", At(0, 0, 0));
    to.Add(joint, washer, "Washer, head", At(0, 0, 0));
    to.Add(joint, washer, "Washer, nut", At(22, 0, 0));
    to.Add(joint, nut, "Nut", At(23.6, 0, 0));
    const TDF_Label plate = to.Part("Base plate", example::BasePlate(), BLUE_PAINT);
    const TDF_Label foot = to.Part("Foot", example::Foot(), BLUE_PAINT);
    const TDF_Label bell = to.Part("Pumpenträger", example::BellHousing(), CAST_IRON);
    to.Add(frame, plate, "Base plate", At(0, 0, -94));
    to.Add(frame, foot, "Foot, motor side", At(-102, 0, -94));
    to.Add(frame, foot, "Foot, pump side", At(-22, 0, -94));
    to.Add(frame, bell, "Bell housing", Along(-24, 0, UPPER, gp_Dir(-1, 0, 0)));
    int number = 1;
    for (const double x : {-102.0, -22.0}) {
        for (const double y : {-50.0, 50.0})
            to.Add(frame, joint, "Joint " + std::to_string(number++),
                   Along(x, y, -84, gp_Dir(0, 0, -1)));
    }
    return frame;
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::cerr << "usage: generate_example FILE\n";
        return 2;
    }
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
    try {
        Assembler to;
        const TDF_Label unit = to.Assembly("Pump unit");
        to.Add(unit, Pump(to), "Pump", At(0, 0, 0));
        to.Add(unit, Coupling(to), "Coupling", At(-60, 0, UPPER));
        to.Add(unit, Frame(to), "Frame", At(0, 0, 0));
        if (to.Write(arguments[1]))
            return 0;
        std::cerr << "generate_example: " << arguments[1] << ": cannot be written\n";
    } catch (const Standard_Failure& failure) {
        std::cerr << "generate_example: " << failure.DynamicType()->Name() << ": "
                  << failure.GetMessageString() << '\n';
    }
    return 1;
}
