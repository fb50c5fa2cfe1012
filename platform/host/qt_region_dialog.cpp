#include "platform/host/qt_region_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <memory>

namespace platform::host {

namespace {

constexpr int kWarningLines = 2;
constexpr int kFewestPixels = 2;    // of a picture that can be recorded
constexpr int kMostPixels = 32767;  // of a screen

}  // namespace

RegionDialog::RegionDialog(const QRect& region, const QRect& screen, QWidget* parent)
    : QDialog(parent),
      screen_(screen),
      width_(this),
      height_(this),
      left_(this),
      top_(this),
      warning_(this) {
    setObjectName(QStringLiteral("regionDialog"));
    setWindowTitle(tr("Region of the screen"));
    struct Row {
        QSpinBox& field;
        const char* name;
        QString label;
        QString spoken;
        int least;
        int value;
    };
    const Row rows[] = {
        {width_, "regionWidth", tr("&Width:"), tr("Width in pixels"), kFewestPixels,
         region.width()},
        {height_, "regionHeight", tr("&Height:"), tr("Height in pixels"), kFewestPixels,
         region.height()},
        {left_, "regionLeft", tr("From the &left:"), tr("Pixels from the left edge"), 0,
         region.x()},
        {top_, "regionTop", tr("From the &top:"), tr("Pixels from the upper edge"), 0, region.y()},
    };
    // The layouts and what stands in them belong to the dialog.
    auto layout = std::make_unique<QFormLayout>(this);
    for (const Row& row : rows) {
        row.field.setObjectName(QLatin1String(row.name));
        row.field.setAccessibleName(row.spoken);
        row.field.setRange(row.least, kMostPixels);
        row.field.setSuffix(tr(" pixels"));
        row.field.setValue(row.value);
        connect(&row.field, &QSpinBox::valueChanged, this, [this] { Check(); });
        layout->addRow(row.label, &row.field);
    }
    warning_.setObjectName(QStringLiteral("regionWarning"));
    warning_.setWordWrap(true);
    warning_.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // The dialog does not grow when a warning comes.
    warning_.setMinimumHeight(kWarningLines * warning_.fontMetrics().lineSpacing());
    layout->addRow(&warning_);
    auto buttons =
        std::make_unique<QDialogButtonBox>(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons.get(), &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons.get(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::finished, this, [this] { frame_.Hide(); });
    ok_ = buttons->button(QDialogButtonBox::Ok);
    layout->addRow(buttons.release());
    static_cast<void>(layout.release());
    width_.selectAll();
    Check();
}

QRect RegionDialog::Region() const {
    return {left_.value(), top_.value(), width_.value(), height_.value()};
}

void RegionDialog::Check() {
    const bool inside = screen_.isEmpty() || screen_.contains(Region());
    warning_.setText(inside ? tr("The frame on the screen shows it.")
                            : tr("It does not lie on the screen, which has %1 x %2 pixels.")
                                  .arg(screen_.width())
                                  .arg(screen_.height()));
    if (screen_.isEmpty()) warning_.setText(tr("It is cut out of what the desktop shares."));
    ok_->setEnabled(inside);
    if (inside && !screen_.isEmpty())
        frame_.ShowAround(Region());
    else
        frame_.Hide();
}

}  // namespace platform::host
