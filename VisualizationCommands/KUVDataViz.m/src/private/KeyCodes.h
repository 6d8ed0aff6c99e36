#ifndef KeyCodes_h
#define KeyCodes_h

// The host's key identifiers that the layouts act upon. What an arrow key leads to is up to each
// layout.

constexpr unsigned int KEY_UNZOOM = 0x100000;
constexpr unsigned int KEY_UP = 0x800000;
constexpr unsigned int KEY_LEFT = 0x900000;
constexpr unsigned int KEY_DOWN = 0xA00000;
constexpr unsigned int KEY_RIGHT = 0xB00000;
constexpr unsigned int KEY_PAGE_MORE = 0x400000;
constexpr unsigned int KEY_PAGE_FEWER = 0x700000;

#endif
