#include "paint/PaintSession.h"

#include "paint/QtBackends.h"

#include <QGuiApplication>

#include <cstdio>

namespace paint {

namespace {

void KeepQuiet(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

}  // namespace

PaintSession::PaintSession()
{
    if (!qGuiApp) {
        // Without this Qt looks for a display and aborts the program when there is none. Its
        // "minimal" platform would do without one too, but has no fonts.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(KeepQuiet);
        application_ = std::make_unique<QGuiApplication>(argumentCount_, arguments_);
    }
    core::SetImageBackend(std::make_shared<QtImageBackend>());
}

PaintSession::~PaintSession() { core::SetImageBackend(nullptr); }

core::MeasuringFont* MakeFont(const std::string& family, std::string& remark)
{
    remark.clear();
    const auto backend = std::make_shared<QtFontBackend>(family);
    const LabelFonts& fonts = backend->GetFonts();
    if (!fonts.HasFont())
        remark = "no font is installed: PNG and PDF pictures have no labels";
    else if (!family.empty() && !fonts.HasFamily())
        remark = "font '" + family + "' is not installed; labels use '" +
                 fonts.GetResolvedFamily().toStdString() + '\'';
    return new core::MeasuringFont(backend);
}

}  // namespace paint
