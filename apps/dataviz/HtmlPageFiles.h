#pragma once

namespace dataviz {

// The files in html/, as they were when the program was built.

extern const char* const PAGE_FRAME;   ///< page.html, with {{name}} where something is put in
extern const char* const PAGE_STYLE;   ///< page.css
extern const char* const PAGE_SCRIPT;  ///< page.js

}  // namespace dataviz
