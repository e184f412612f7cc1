#include "pager.h"
