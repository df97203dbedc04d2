// The boxes of window_system.h: dialogs from their tables, messages, the question for a file. None
// has a loop of its own, so the event loop goes on, and with it ticks, feeds, line and paints.

#include "host/platform/desktop/boxes.h"

#include "host/platform/desktop/main_window.h"
#include "host/platform/desktop/text.h"
#include "host/requests/main_requests.h"
#include "host/window/ground/boxes.h"
#include "host/window/ground/dialog.h"
#include "host/window/roof/menu_command.h"
#include "seam/window_system.h"

#include <QCloseEvent>
#include <QDialog>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>

#include <memory>

namespace orvanel {

namespace {

/// The box of a dialog table. Escape and the close box differ, as the rules do.
class TableDialog final : public QDialog {
  public:
    TableDialog(const Dialog& table, QWidget* parent)
        : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                              Qt::WindowCloseButtonHint),
          cancel_id(table.cancel_id) {}

    /// Where it stands goes to the rules before what was done in it, which may end it. Not with
    /// each move: while a window manager takes it in, the frame is not yet known.
    void report_use(int control, int value) {
        keep_corner();
        dialog_used(control, value);
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        keep_corner();
        dialog_boxed();
    }
    void reject() override { report_use(cancel_id, 0); }

  private:
    void keep_corner() const {
        const QPoint corner = frameGeometry().topLeft();
        if (can_place_windows()) dialog_moved(corner.x(), corner.y());
    }

    int cancel_id;
};

constinit TableDialog* open_table = nullptr;

/// Wide enough for the title of a box and the buttons beside it.
QSpacerItem* title_spacer(const QDialog& box) {
    constexpr int beside_title = 120;
    return new QSpacerItem(box.fontMetrics().horizontalAdvance(box.windowTitle()) + beside_title,
                           0);
}

/// A message that is yet to be shown. It holds paths and what others have written, so nothing in it
/// is markup.
QMessageBox* new_message_box(std::string_view caption, std::string_view text, QWidget* parent) {
    auto* const box = new QMessageBox(QMessageBox::Critical, to_qt(caption), to_qt(text),
                                      QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);
    if (auto* const grid = qobject_cast<QGridLayout*>(box->layout()); grid != nullptr)
        grid->addItem(title_spacer(*box), grid->rowCount(), 0, 1, grid->columnCount());
    return box;
}

constexpr int picture_top = 10;  // of the About bitmap, below the dialog's edge

/// Builds the controls of a table, one below the other; groups stand side by side.
class Builder {
  public:
    Builder(TableDialog& into, int focus) : dialog(into), focus_id(focus) {
        page = new QVBoxLayout(&dialog);
        page->setSizeConstraint(QLayout::SetFixedSize);
        page->addSpacerItem(title_spacer(dialog));
    }

    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    void add(const Control& control) {
        switch (control.kind) {
        case ControlKind::group:
            return add_group(control);
        case ControlKind::radio:
            return add_radio(control);
        case ControlKind::slider:
            return add_slider(control);
        case ControlKind::label:
            return page->addWidget(new QLabel(to_qt(control.label)), 0, Qt::AlignHCenter);
        case ControlKind::picture:
            return add_picture();
        case ControlKind::button:
            return add_button(control);
        }
    }

  private:
    void add_group(const Control& control) {
        if (groups == nullptr) {
            groups = new QHBoxLayout;
            page->addLayout(groups);
        }
        auto* const box = new QGroupBox(to_qt(control.label));
        group = new QVBoxLayout(box);
        groups->addWidget(box, 0, Qt::AlignTop);
    }

    void add_radio(const Control& control) {
        auto* const button = new QRadioButton(to_qt(control.label));
        const int id = control.id;
        button->setObjectName(QString::number(id));
        button->setChecked(dialog_value(id) != 0);
        // The one that is chosen already shows its choice too: a reset may have left old colours.
        QObject::connect(button, &QRadioButton::clicked, &dialog,
                         [&box = dialog, id] { box.report_use(id, 1); });
        group->addWidget(button);
        give_focus(button, id);
    }

    void add_slider(const Control& control) {
        auto* const slider = new QSlider(Qt::Horizontal);
        const int id = control.id;
        slider->setObjectName(QString::number(id));
        slider->setRange(0, slider_end);
        slider->setPageStep(slider_page);
        slider->setTickInterval(slider_page);
        slider->setTickPosition(QSlider::TicksBelow);
        slider->setValue(dialog_value(id));
        QObject::connect(slider, &QSlider::valueChanged, &dialog,
                         [&box = dialog, id](int position) { box.report_use(id, position); });
        auto* const label = new QLabel(to_qt(control.label));
        label->setBuddy(slider);
        page->addWidget(label, 0, Qt::AlignHCenter);
        auto* const row = new QHBoxLayout;
        row->addWidget(new QLabel(QStringLiteral("0%")));
        row->addWidget(slider, 1);
        row->addWidget(new QLabel(QStringLiteral("100%")));
        page->addLayout(row);
        give_focus(slider, id);
    }

    void add_picture() {
        auto* const label = new QLabel;
        label->setPixmap(QPixmap(QStringLiteral(":/about.bmp")));
        QMargins margins = page->contentsMargins();
        margins.setTop(picture_top);
        page->setContentsMargins(margins);
        page->addWidget(label, 0, Qt::AlignHCenter);
    }

    void add_button(const Control& control) {
        if (buttons == nullptr) {
            buttons = new QHBoxLayout;
            page->addLayout(buttons);
            page->setAlignment(buttons, Qt::AlignHCenter);
        }
        auto* const button = new QPushButton(to_qt(control.label));
        const int id = control.id;
        button->setObjectName(QString::number(id));
        button->setDefault(id == focus_id);
        QObject::connect(button, &QPushButton::clicked, &dialog,
                         [&box = dialog, id] { box.report_use(id, 0); });
        buttons->addWidget(button);
        give_focus(button, id);
    }

    void give_focus(QWidget* widget, int id) const {
        if (id == focus_id) widget->setFocus();
    }

    TableDialog& dialog;
    int focus_id;
    QVBoxLayout* page;
    QHBoxLayout* groups = nullptr;
    QVBoxLayout* group = nullptr;
    QHBoxLayout* buttons = nullptr;
};

}  // namespace

void open_dialog(const Dialog& table, std::optional<PixelPoint> at) {
    open_table = new TableDialog(table, main_window);
    open_table->setWindowTitle(to_qt(table.title));
    Builder builder(*open_table, table.focus_id);
    for (const Control& control : table.controls)
        builder.add(control);
    if (at && can_place_windows())
        open_table->move(place_on_screen({at->x, at->y}, open_table->sizeHint()));
    open_table->open();
}

void close_dialog() {
    if (open_table == nullptr) return;
    open_table->hide();
    open_table->deleteLater();  // it may be the sender of what has brought us here
    open_table = nullptr;
}

void open_message_box(MessageOf whose, std::string_view caption, std::string_view text) {
    auto* const box = new_message_box(caption, text, main_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box_opened();
    QObject::connect(box, &QMessageBox::finished, main_window, [whose](int /*button*/) {
        if (whose == MessageOf::module) message_closed();
        box_closed();
    });
    const bool holds_window = whose == MessageOf::module;
    box->setWindowModality(holds_window ? Qt::WindowModal : Qt::NonModal);
    box->show();
    box->raise();
    box->activateWindow();
}

void show_fault_box(std::string_view caption, std::string_view text) {
    const std::unique_ptr<QMessageBox> box(new_message_box(caption, text, nullptr));
    box->exec();
}

void ask_for_file() {
    const QString begins_with = QStringLiteral("*.eep");
    auto* const box = new QFileDialog(main_window, QStringLiteral("Open"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setFileMode(QFileDialog::ExistingFile);
    // The brackets at the end are patterns, the rest is what the user reads. A kit is the source of
    // an EEPROM file, and a PNG goes the way of a BMP.
    box->setOption(QFileDialog::HideNameFilterDetails);
    box->setNameFilters(
        {QStringLiteral("Eeprom Files (*.eep) (*.eep *.EEP *.kit *.KIT)"),
         QStringLiteral("Picture Files (*.bmp *.blh) (*.bmp *.blh *.png *.BMP *.BLH *.PNG)"),
         QStringLiteral("All files (*.*) (*)")});
    box->setDefaultSuffix(QStringLiteral("eep"));
    box->selectFile(begins_with);
    box_opened();
    QObject::connect(box, &QFileDialog::finished, main_window, [box, begins_with](int chosen) {
        const QStringList files = box->selectedFiles();
        const QString path = chosen != 0 && !files.isEmpty() ? files.first() : begins_with;
        file_chosen(path.toStdString());
        box_closed();
    });
    box->open();
}

}  // namespace orvanel
