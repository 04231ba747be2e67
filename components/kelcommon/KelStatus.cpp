#include "scoring/common/KelStatus.h"
