#include "client/commands/Pictures.h"

#include "client/terminal/Console.h"
#include "plots/RunPlots.h"

namespace client {

bool drawPictures(const QString &folder)
{
    const plots::Drawing drawing = plots::drawRun(folder);
    for (const QString &note : drawing.notes)
        Console::instance().note(note);
    return drawing.isDone;
}

} // namespace client
