#include <vorn/host.h>

#include "platform/system_text.h"

void VORN_H_SetMessageHandler(VORN_MessageHandler handler) {
    vorn::platform::setMessageHandler(handler);
}
