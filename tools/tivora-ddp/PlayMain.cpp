// tivora-ddp-play: `tivora-ddp play` on its own, the one command that needs
// the audio engine.
#include "tools/tivora-ddp/Commands.h"

#include "ddp/FileNameCodec.h"

#include <QCoreApplication>
#include <QStringList>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    FileNameCodec::install(); // before the arguments are read
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    return runPlay(args);
}
