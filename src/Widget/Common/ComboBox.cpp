#include "Widget/Common/ComboBox.h"

void ComboBox::showPopup()
{
    mShowPopup = true;
    QComboBox::showPopup();
}

void ComboBox::hidePopup()
{
    QComboBox::hidePopup();
    mShowPopup = false;
}
