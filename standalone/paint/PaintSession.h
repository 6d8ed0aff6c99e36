#ifndef paint_PaintSession_h
#define paint_PaintSession_h

#include "core/MeasuringFont.h"

#include <memory>
#include <string>

class QGuiApplication;

namespace paint {

/// Sets Qt up for painting without a display. Keep one alive, on one thread, while anything here is
/// used; a process that forks makes it in the child.
///
/// Installs the reader of image files for `KUVPixelImage::CreateFromFileEx`. Qt's own remarks about
/// the machine (locale, folders of the session) are kept off standard error; its fatal messages are
/// not. When the program has a QGuiApplication already (a desktop program), that one is used as it
/// is.
class PaintSession {
public:
    PaintSession();
    /// Takes the image reader away again. Fonts made before stay usable only while Qt lives.
    ~PaintSession();
    PaintSession(const PaintSession&) = delete;
    PaintSession& operator=(const PaintSession&) = delete;

private:
    int argumentCount_ = 1;
    char programName_[8] = "dataviz";
    char* arguments_[2] = {programName_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

/// A font for `Draw` that measures what `PaintPicture` with the same family paints; one reference
/// for the caller. Empty `family`: the system's sans-serif font.
///
/// Never null while there is memory. `remark` gets a line for the user, without a full stop, when
/// the family or any font at all is missing; else it is emptied.
core::MeasuringFont* MakeFont(const std::string& family, std::string& remark);

}  // namespace paint

#endif
