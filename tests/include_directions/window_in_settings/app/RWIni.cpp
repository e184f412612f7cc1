#include "jobs/context.h"
