#include "skin.h"

#include "toolkit/shared_skin.h"

void init_skin() { init_shared_skin(); }

void uninit_skin() { uninit_shared_skin(); }
