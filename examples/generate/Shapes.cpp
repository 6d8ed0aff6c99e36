#include "Shapes.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepLib.hxx>
#include <BRepOffsetAPI_MakePipe.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <GC_MakeArcOfCircle.hxx>
#include <Geom2d_Line.hxx>
#include <GeomAPI_PointsToBSpline.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <ShapeUpgrade_UnifySameDomain.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopoDS_Wire.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ.hxx>
#include <gp_Lin2d.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <initializer_list>

namespace example {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr double HALF_DISTANCE = CENTRE_DISTANCE / 2;

// ---- building blocks

/// A cylinder along x from `x` on, its axis through (y, z).
TopoDS_Shape Rod(double x, double radius, double length, double y = 0, double z = 0)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(x, y, z), gp_Dir(1, 0, 0)), radius, length)
        .Shape();
}

TopoDS_Shape Cone(double x, double from, double to, double length)
{
    return BRepPrimAPI_MakeCone(gp_Ax2(gp_Pnt(x, 0, 0), gp_Dir(1, 0, 0)), from, to, length).Shape();
}

/// A cylinder along y.
TopoDS_Shape Post(double x, double y, double z, double radius, double length)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(x, y, z), gp_Dir(0, 1, 0)), radius, length)
        .Shape();
}

TopoDS_Shape Box(double x0, double y0, double z0, double x1, double y1, double z1)
{
    return BRepPrimAPI_MakeBox(gp_Pnt(x0, y0, z0), gp_Pnt(x1, y1, z1)).Shape();
}

TopoDS_Shape Moved(const TopoDS_Shape& shape, const gp_Trsf& map)
{
    return BRepBuilderAPI_Transform(shape, map).Shape();
}

TopoDS_Shape Turned(const TopoDS_Shape& shape, double degrees)
{
    gp_Trsf map;
    map.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(1, 0, 0)), degrees * PI / 180);
    return Moved(shape, map);
}

/// Joins and leaves one face where several lie in one surface.
TopoDS_Shape Sum(std::initializer_list<TopoDS_Shape> shapes)
{
    TopoDS_Shape sum;
    for (const TopoDS_Shape& shape : shapes)
        sum = sum.IsNull() ? shape : TopoDS_Shape(BRepAlgoAPI_Fuse(sum, shape).Shape());
    ShapeUpgrade_UnifySameDomain unify(sum);
    unify.Build();
    return unify.Shape();
}

TopoDS_Shape Without(TopoDS_Shape shape, std::initializer_list<TopoDS_Shape> cuts)
{
    for (const TopoDS_Shape& cut : cuts)
        shape = BRepAlgoAPI_Cut(shape, cut).Shape();
    return shape;
}

TopoDS_Shape Tube(double x, double outer, double inner, double length)
{
    return Without(Rod(x, outer, length), {Rod(x - 1, inner, length + 2)});
}

TopoDS_Shape HexPrism(double x, double acrossFlats, double length)
{
    BRepBuilderAPI_MakePolygon outline;
    for (int i = 0; i < 6; ++i) {
        const double angle = i * PI / 3;
        const double radius = acrossFlats / std::sqrt(3.0);
        outline.Add(gp_Pnt(x, radius * std::cos(angle), radius * std::sin(angle)));
    }
    outline.Close();
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(),
                                 gp_Vec(length, 0, 0))
        .Shape();
}

/// A piece of a tube, `degrees` wide about the y axis.
TopoDS_Shape Sector(double x, double inner, double outer, double length, double degrees)
{
    const double half = degrees / 2 * PI / 180;
    const auto at = [&](double radius, double angle) {
        return gp_Pnt(x, radius * std::cos(angle), radius * std::sin(angle));
    };
    const auto arc = [&](double radius, double from, double to) {
        return BRepBuilderAPI_MakeEdge(
                   GC_MakeArcOfCircle(at(radius, from), at(radius, 0), at(radius, to)).Value())
            .Edge();
    };
    BRepBuilderAPI_MakeWire outline;
    outline.Add(arc(outer, -half, half));
    outline.Add(BRepBuilderAPI_MakeEdge(at(outer, half), at(inner, half)).Edge());
    outline.Add(arc(inner, half, -half));
    outline.Add(BRepBuilderAPI_MakeEdge(at(inner, -half), at(outer, -half)).Edge());
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(),
                                 gp_Vec(length, 0, 0))
        .Shape();
}

/// The outline of two circles and their tangents, around both gear axes.
TopoDS_Wire ObroundWire(double x, double radius)
{
    const gp_Pnt topLeft(x, -radius, HALF_DISTANCE);
    const gp_Pnt topRight(x, radius, HALF_DISTANCE);
    const gp_Pnt bottomLeft(x, -radius, -HALF_DISTANCE);
    const gp_Pnt bottomRight(x, radius, -HALF_DISTANCE);
    const gp_Pnt top(x, 0, HALF_DISTANCE + radius);
    const gp_Pnt bottom(x, 0, -HALF_DISTANCE - radius);
    BRepBuilderAPI_MakeWire wire;
    wire.Add(BRepBuilderAPI_MakeEdge(GC_MakeArcOfCircle(topLeft, top, topRight).Value()).Edge());
    wire.Add(BRepBuilderAPI_MakeEdge(topRight, bottomRight).Edge());
    wire.Add(BRepBuilderAPI_MakeEdge(GC_MakeArcOfCircle(bottomRight, bottom, bottomLeft).Value())
                 .Edge());
    wire.Add(BRepBuilderAPI_MakeEdge(bottomLeft, topLeft).Edge());
    return wire.Wire();
}

TopoDS_Shape Obround(double x, double radius, double length)
{
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(ObroundWire(x, radius)).Face(),
                                 gp_Vec(length, 0, 0))
        .Shape();
}

/// The eight screws around the pump; the same places in body, covers and assembly.
TopoDS_Shape WithScrewHoles(TopoDS_Shape shape, double x, double length)
{
    for (const double y : {-31.0, 31.0}) {
        for (const double z : {-31.5, -10.5, 10.5, 31.5})
            shape = BRepAlgoAPI_Cut(shape, Rod(x, 3.3, length, y, z)).Shape();
    }
    return shape;
}

TopoDS_Shape WithPinHoles(TopoDS_Shape shape, double x, double length)
{
    return Without(std::move(shape), {Rod(x, 2.5, length, 0, HALF_DISTANCE + 31),
                                      Rod(x, 2.5, length, 0, -HALF_DISTANCE - 31)});
}

// ---- the gear

constexpr double MODULE = 3;
constexpr int TEETH = 14;
constexpr double PITCH_RADIUS = MODULE * TEETH / 2;
constexpr double TIP_RADIUS = PITCH_RADIUS + MODULE;
constexpr double ROOT_RADIUS = PITCH_RADIUS - 1.2 * MODULE;
constexpr double PRESSURE_ANGLE = 20 * PI / 180;

gp_Pnt OnCircle(double radius, double angle)
{
    return gp_Pnt(0, radius * std::cos(angle), radius * std::sin(angle));
}

/// Angle between a tooth's middle and its flank at `radius`.
double HalfToothAngle(double radius)
{
    const double base = PITCH_RADIUS * std::cos(PRESSURE_ANGLE);
    const auto involute = [](double angle) { return std::tan(angle) - angle; };
    const double atPitch = PI / (2 * TEETH) + involute(PRESSURE_ANGLE);
    if (radius <= base)
        return atPitch;
    return atPitch - involute(std::acos(base / radius));
}

TopoDS_Edge Flank(double middle, double side)
{
    constexpr int POINTS = 5;
    TColgp_Array1OfPnt points(1, POINTS);
    for (int i = 0; i < POINTS; ++i) {
        const double radius = ROOT_RADIUS + (TIP_RADIUS - ROOT_RADIUS) * i / (POINTS - 1);
        points.SetValue(i + 1, OnCircle(radius, middle + side * HalfToothAngle(radius)));
    }
    return BRepBuilderAPI_MakeEdge(GeomAPI_PointsToBSpline(points).Curve()).Edge();
}

TopoDS_Edge Arc(double radius, double from, double to)
{
    return BRepBuilderAPI_MakeEdge(GC_MakeArcOfCircle(OnCircle(radius, from),
                                                      OnCircle(radius, (from + to) / 2),
                                                      OnCircle(radius, to))
                                       .Value())
        .Edge();
}

TopoDS_Wire GearOutline()
{
    constexpr double STEP = 2 * PI / TEETH;
    const double atRoot = HalfToothAngle(ROOT_RADIUS);
    const double atTip = HalfToothAngle(TIP_RADIUS);
    BRepBuilderAPI_MakeWire wire;
    for (int i = 0; i < TEETH; ++i) {
        const double middle = i * STEP;
        wire.Add(Flank(middle, -1));
        wire.Add(Arc(TIP_RADIUS, middle - atTip, middle + atTip));
        wire.Add(Flank(middle, 1));
        wire.Add(Arc(ROOT_RADIUS, middle + atRoot, middle + STEP - atRoot));
    }
    return wire.Wire();
}

}  // namespace

// ---- housing

TopoDS_Shape PumpBody()
{
    const double middle = GEAR_WIDTH / 2;
    TopoDS_Shape body = Sum({Obround(0, 40, GEAR_WIDTH), Post(middle, -52, 0, 11.9, 104)});
    body = Without(body, {Rod(-1, TIP_RADIUS + 0.1, GEAR_WIDTH + 2, 0, HALF_DISTANCE),
                          Rod(-1, TIP_RADIUS + 0.1, GEAR_WIDTH + 2, 0, -HALF_DISTANCE),
                          Post(middle, -53, 0, 8, 106)});
    return WithPinHoles(WithScrewHoles(body, -1, GEAR_WIDTH + 2), -1, GEAR_WIDTH + 2);
}

TopoDS_Shape FrontCover()
{
    TopoDS_Shape cover = Sum({Obround(0, 40, 20), Rod(-14, 22, 14, 0, HALF_DISTANCE)});
    cover = Without(cover, {Rod(-15, 7.2, 36, 0, HALF_DISTANCE), Rod(-15, 14, 9, 0, HALF_DISTANCE),
                            Rod(4, 9, 17, 0, HALF_DISTANCE), Rod(4, 9, 17, 0, -HALF_DISTANCE)});
    return WithPinHoles(WithScrewHoles(cover, -1, 22), 10, 11);
}

TopoDS_Shape RearCover()
{
    TopoDS_Shape cover = Without(
        Obround(0, 40, 18), {Rod(-1, 9, 15, 0, HALF_DISTANCE), Rod(-1, 9, 15, 0, -HALF_DISTANCE)});
    return WithPinHoles(WithScrewHoles(cover, -1, 20), -1, 11);
}

TopoDS_Shape FlatSeal()
{
    // Just outside the bores of the gears.
    const TopoDS_Wire path = ObroundWire(0, 26.5);
    const gp_Ax2 section(gp_Pnt(0, -26.5, HALF_DISTANCE), gp_Dir(0, 0, 1));
    const TopoDS_Wire circle =
        BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(gp_Circ(section, 1.0)).Edge()).Wire();
    return BRepOffsetAPI_MakePipe(path, BRepBuilderAPI_MakeFace(circle).Face()).Shape();
}

TopoDS_Shape Bushing() { return Without(Tube(0, 9, 7, 13), {Box(-1, -0.4, 0, 14, 0.4, 10)}); }

TopoDS_Shape DowelPin()
{
    return Sum({Cone(0, 2, 2.5, 0.8), Rod(0.8, 2.5, 18.4), Cone(19.2, 2.5, 2, 0.8)});
}

// ---- gear sets

TopoDS_Shape Gear()
{
    const TopoDS_Shape blank = BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(GearOutline()).Face(),
                                                     gp_Vec(GEAR_WIDTH, 0, 0))
                                   .Shape();
    return Without(blank, {Rod(-1, 7, GEAR_WIDTH + 2), Box(-1, -2.5, 0, GEAR_WIDTH + 1, 2.5, 9)});
}

TopoDS_Shape DriveShaft()
{
    const TopoDS_Shape shaft = Sum({Cone(-62, 6, 7, 1), Rod(-61, 7, 98), Cone(37, 7, 6, 1)});
    // Keyways for the coupling and for the gear, a groove for the retaining ring.
    return Without(shaft, {Box(-58, -2.5, 4.5, -40, 2.5, 8), Box(2, -2.5, 4.5, 22, 2.5, 8),
                           Tube(-36, 9, 6.4, 1.2)});
}

TopoDS_Shape IdlerShaft()
{
    const TopoDS_Shape shaft = Sum({Cone(-14, 6, 7, 1), Rod(-13, 7, 50), Cone(37, 7, 6, 1)});
    return Without(shaft, {Box(2, -2.5, 4.5, 22, 2.5, 8)});
}

TopoDS_Shape ParallelKey(double length)
{
    return Sum(
        {Box(2.5, -2.5, 0, length - 2.5, 2.5, 4),
         BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(2.5, 0, 0), gp_Dir(0, 0, 1)), 2.5, 4).Shape(),
         BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(length - 2.5, 0, 0), gp_Dir(0, 0, 1)), 2.5, 4)
             .Shape()});
}

TopoDS_Shape RetainingRing()
{
    const TopoDS_Shape ring =
        Sum({Tube(0, 8.6, 6.5, 1), Rod(0, 2, 1, -3.4, -9), Rod(0, 2, 1, 3.4, -9)});
    return Without(ring, {Box(-1, -1.6, -12, 2, 1.6, -4), Rod(-1, 0.8, 3, -3.4, -9.2),
                          Rod(-1, 0.8, 3, 3.4, -9.2)});
}

TopoDS_Shape ShaftSeal()
{
    const TopoDS_Shape ring = Tube(0, 14, 8.5, 7);
    const TopoDS_Shape lip = Without(Cone(0, 12, 8.6, 5), {Cone(-0.1, 11, 6.9, 5.2)});
    return Sum({ring, lip});
}

// ---- fasteners

TopoDS_Shape SocketScrew(double diameter, double length)
{
    const double head = 0.75 * diameter;
    return Without(Sum({Rod(-diameter, head, diameter), Rod(0, diameter / 2, length - 1),
                        Cone(length - 1, diameter / 2, diameter / 2 - 1, 1)}),
                   {HexPrism(-diameter - 1, 0.8 * diameter, 1 + diameter / 2)});
}

TopoDS_Shape HexBolt(double diameter, double length)
{
    return Sum({HexPrism(-0.65 * diameter, 1.625 * diameter, 0.65 * diameter),
                Rod(0, diameter / 2, length - 1),
                Cone(length - 1, diameter / 2, diameter / 2 - 1, 1)});
}

TopoDS_Shape HexNut(double diameter)
{
    return Without(HexPrism(0, 1.625 * diameter, 0.8 * diameter),
                   {Rod(-1, diameter / 2, diameter + 2)});
}

TopoDS_Shape Washer(double diameter) { return Tube(0, diameter, 0.54 * diameter, 0.2 * diameter); }

TopoDS_Shape SetScrew()
{
    return Without(Sum({Rod(0, 2.5, 6), Cone(6, 2.5, 1.5, 1)}), {HexPrism(-1, 2.5, 4)});
}

// ---- relief valve, along x from its seat in the body

TopoDS_Shape ValveBody()
{
    return Without(Sum({Rod(-8, 7, 8), HexPrism(0, 24, 10), Rod(10, 10, 28)}),
                   {Rod(-9, 3, 12), Rod(2, 6, 40), Cone(0, 3, 6, 2.01)});
}

TopoDS_Shape ValveBall() { return BRepPrimAPI_MakeSphere(gp_Pnt(0, 0, 0), 5).Shape(); }

TopoDS_Shape ValveSpring()
{
    constexpr double RADIUS = 4.4;
    constexpr double PITCH = 3.2;
    constexpr double TURNS = 6;
    // A helix is a straight line on the unrolled cylinder.
    const Handle(Geom_CylindricalSurface) cylinder =
        new Geom_CylindricalSurface(gp_Ax3(gp_Pnt(0, 0, 0), gp_Dir(1, 0, 0)), RADIUS);
    const Handle(Geom2d_Line) line = new Geom2d_Line(gp_Pnt2d(0, 0), gp_Dir2d(2 * PI, PITCH));
    const double length = std::hypot(2 * PI, PITCH) * TURNS;
    const TopoDS_Edge helix = BRepBuilderAPI_MakeEdge(line, cylinder, 0, length).Edge();
    BRepLib::BuildCurve3d(helix);
    const TopoDS_Wire path = BRepBuilderAPI_MakeWire(helix).Wire();
    gp_Pnt start;
    gp_Vec tangent;
    Standard_Real first = 0;
    Standard_Real last = 0;
    BRep_Tool::Curve(helix, first, last)->D1(first, start, tangent);
    const TopoDS_Wire circle =
        BRepBuilderAPI_MakeWire(
            BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(start, gp_Dir(tangent)), 0.7)).Edge())
            .Wire();
    return BRepOffsetAPI_MakePipe(path, BRepBuilderAPI_MakeFace(circle).Face()).Shape();
}

TopoDS_Shape AdjustingScrew()
{
    return Without(Sum({Rod(0, 4, 4), Rod(4, 5.9, 8), Rod(12, 3, 16)}),
                   {Box(26, -4, -0.6, 29, 4, 0.6)});
}

TopoDS_Shape ValveCap()
{
    return Without(Sum({HexPrism(0, 24, 8), Rod(8, 9, 14)}), {Rod(-1, 7, 20)});
}

// ---- fittings

TopoDS_Shape FittingNipple()
{
    return Without(Sum({Rod(-10, 8, 10), HexPrism(0, 27, 9), Rod(9, 9, 14)}), {Rod(-11, 5, 36)});
}

TopoDS_Shape UnionNut()
{
    return Without(HexPrism(0, 30, 16), {Rod(-1, 9.1, 12), Rod(10, 6.5, 8)});
}

TopoDS_Shape SealingRing() { return Tube(0, 11, 8.2, 1.5); }

// ---- coupling

TopoDS_Shape CouplingHub()
{
    // At 30, 150 and 270 degrees: turned end to end, a second hub's claws come to lie between
    // these.
    const TopoDS_Shape claw = Sector(22, 14, 24, 9, 26);
    return Without(
        Sum({Rod(0, 20, 14), Rod(14, 25, 8), Turned(claw, 30), Turned(claw, 150),
             Turned(claw, 270)}),
        {Rod(-1, 7, 24), Box(-1, -2.5, -9, 23, 2.5, 9),
         BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(7, 0, 0), gp_Dir(0, 0, -1)), 2.5, 22).Shape()});
}

TopoDS_Shape CouplingSpider()
{
    TopoDS_Shape star = Rod(0, 14, 9);
    const TopoDS_Shape arm = Without(Box(0, 10, -4, 9, 30, 4), {Tube(-1, 60, 23.5, 11)});
    for (int i = 0; i < 6; ++i)
        star = BRepAlgoAPI_Fuse(star, Turned(arm, i * 60.0)).Shape();
    return Without(Sum({star}), {Rod(-1, 8, 11)});
}

// ---- frame

TopoDS_Shape BellHousing()
{
    TopoDS_Shape bell = Sum({Tube(0, 60, 22.2, 10), Tube(10, 44, 38, 70), Tube(80, 60, 38, 10)});
    bell = Without(bell, {Box(28, -60, -18, 64, 60, 18)});
    for (int i = 0; i < 4; ++i) {
        const double angle = (45 + 90 * i) * PI / 180;
        const double y = 52 * std::cos(angle);
        const double z = 52 * std::sin(angle);
        bell = Without(bell, {Rod(-1, 4.3, 12, y, z), Rod(79, 4.3, 12, y, z)});
    }
    return bell;
}

TopoDS_Shape BasePlate()
{
    TopoDS_Shape plate = Box(-140, -75, -12, 60, 75, 0);
    for (const double x : {-128.0, 48.0}) {
        for (const double y : {-63.0, 63.0})
            plate = Without(plate, {BRepPrimAPI_MakeCylinder(
                                        gp_Ax2(gp_Pnt(x, y, -13), gp_Dir(0, 0, 1)), 5.5, 14)
                                        .Shape()});
    }
    for (const double x : {-102.0, -22.0}) {
        for (const double y : {-50.0, 50.0})
            plate = Without(plate, {BRepPrimAPI_MakeCylinder(
                                        gp_Ax2(gp_Pnt(x, y, -13), gp_Dir(0, 0, 1)), 4.3, 14)
                                        .Shape()});
    }
    return plate;
}

TopoDS_Shape Foot()
{
    // The web carries a flange of the bell housing, whose axis runs 115 above the plate.
    const TopoDS_Shape angle =
        Without(Sum({Box(-12, -62, 0, 12, 62, 10), Box(-12, -40, 10, -2, 40, 72)}),
                {Rod(-13, 60, 12, 0, 115)});
    TopoDS_Shape foot = angle;
    for (const double y : {-50.0, 50.0})
        foot = Without(
            foot,
            {BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(0, y, -1), gp_Dir(0, 0, 1)), 4.3, 12).Shape()});
    return foot;
}

}  // namespace example
