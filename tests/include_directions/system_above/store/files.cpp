#  include <unistd.h>
