#include "WindowOperations.h"

const char *OutletName(Outlet outlet) {
  switch (outlet) {
    case Outlet::label_type:
      return "label_type";
    case Outlet::label_version:
      return "label_version";
    case Outlet::label_serial_number:
      return "label_serial_number";
    case Outlet::label_poweron_message:
      return "label_poweron_message";
    case Outlet::label_com_number:
      return "label_com_number";
    case Outlet::label_recorded_voice:
      return "label_recorded_voice";
    case Outlet::label_dive_log:
      return "label_dive_log";
    case Outlet::pictureBox_set_corvamund2:
      return "pictureBox_set_corvamund2";
    case Outlet::comboBox_index_search_range:
      return "comboBox_index_search_range";
    case Outlet::button_reconnect:
      return "button_reconnect";
    case Outlet::progressBar_cdc:
      return "progressBar_cdc";
  }
  return "";
}
