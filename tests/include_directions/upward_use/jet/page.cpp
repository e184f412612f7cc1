#include "ado/connection.h"
