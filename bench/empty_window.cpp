// What every program of the toolkit costs: an empty window at the place of ours.

#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setGeometry(300, 200, 292, 183);
    window.show();
    return QApplication::exec();
}
