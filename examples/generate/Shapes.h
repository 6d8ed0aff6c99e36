/// The solids of the example assembly, each in its own coordinates: millimetres, the axis of turned
/// parts is x, the seat is at x = 0.
#ifndef EXAMPLES_GENERATE_SHAPES_H
#define EXAMPLES_GENERATE_SHAPES_H

#include <TopoDS_Shape.hxx>

namespace example {

/// Distance of the two gear axes; they lie at z = +21 and z = -21.
inline constexpr double CENTRE_DISTANCE = 42;
inline constexpr double GEAR_WIDTH = 24;

TopoDS_Shape PumpBody();
TopoDS_Shape FrontCover();
TopoDS_Shape RearCover();
TopoDS_Shape FlatSeal();
TopoDS_Shape Bushing();
TopoDS_Shape DowelPin();

TopoDS_Shape Gear();
TopoDS_Shape DriveShaft();
TopoDS_Shape IdlerShaft();
TopoDS_Shape ParallelKey(double length);
TopoDS_Shape RetainingRing();
TopoDS_Shape ShaftSeal();

TopoDS_Shape SocketScrew(double diameter, double length);
TopoDS_Shape HexBolt(double diameter, double length);
TopoDS_Shape HexNut(double diameter);
TopoDS_Shape Washer(double diameter);
TopoDS_Shape SetScrew();

TopoDS_Shape ValveBody();
TopoDS_Shape ValveBall();
TopoDS_Shape ValveSpring();
TopoDS_Shape AdjustingScrew();
TopoDS_Shape ValveCap();

TopoDS_Shape FittingNipple();
TopoDS_Shape UnionNut();
TopoDS_Shape SealingRing();

TopoDS_Shape CouplingHub();
TopoDS_Shape CouplingSpider();

TopoDS_Shape BellHousing();
TopoDS_Shape BasePlate();
TopoDS_Shape Foot();

}  // namespace example

#endif
