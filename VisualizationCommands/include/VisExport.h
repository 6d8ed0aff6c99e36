#ifndef VisExport_h
#define VisExport_h

// Marks what the module offers. Everything else stays hidden in its library.
#define VIS_EXPORT __attribute__((visibility("default")))

#endif
