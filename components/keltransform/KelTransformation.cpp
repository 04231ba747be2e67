#include "scoring/common/KelTransformation.h"
