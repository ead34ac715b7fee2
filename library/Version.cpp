#include <emeg/emeg.h>

const char* emeg_version(void) {
  return EMEG_VERSION_TEXT;
}

const char* emeg_status_text(int status) {
  switch (status) {
  case EMEG_OK:
    return "good";
  case EMEG_BAD_ARGUMENT:
    return "bad argument";
  case EMEG_BAD_SETTING:
    return "bad setting";
  case EMEG_WRONG_ORDER:
    return "wrong order of calls";
  case EMEG_NO_MEMORY:
    return "not enough memory";
  case EMEG_FILE_FAILED:
    return "the scratch file failed";
  case EMEG_CANCELLED:
    return "cancelled";
  case EMEG_FAILED:
    return "failed";
  }
  return "unknown status";
}
