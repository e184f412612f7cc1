#include "app/RWIni.h"
#include "app/Form1.h"
