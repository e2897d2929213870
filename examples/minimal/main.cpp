// The smallest host: a window with a Share button for the movie that is named on the command line.

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QToolBar>

#include "quillohostkit/ShareButton.h"
#include "quillohostkit/ShareStatusLabel.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("minimal");
    auto const movie = QApplication::arguments().value(1);

    QMainWindow window;
    window.setCentralWidget(new QLabel(movie.isEmpty() ? "Usage: minimal MOVIE" : movie));
    window.resize(640, 360);

    auto* const share = new quillohostkit::ShareButton(&window);
    share->SetAsset([=] { return quillohostkit::Asset{movie}; });
    window.addToolBar("Share")->addWidget(share);
    window.statusBar()->addWidget(new quillohostkit::ShareStatusLabel(share->GetController()), 1);

    window.show();
    return QApplication::exec();
}
