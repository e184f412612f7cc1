#include "app/Form1.h"
#include "app/RWIni.h"
