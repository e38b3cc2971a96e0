#include "main/macos/PopoverSettings.h"

#include <QWidget>

namespace veloria {

// There winId() is the address of the window's view.
void* PopoverSettings::view() {
  return reinterpret_cast<void*>(host_.embeddable().winId());
}

// Not before: a window that is shown while its view is in no window gets a frame of its own.
void PopoverSettings::appeared() {
  host_.embeddable().show();
}

void PopoverSettings::disappeared() {
  host_.embeddable().hide();
}

}  // namespace veloria
