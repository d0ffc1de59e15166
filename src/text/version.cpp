#include <portinglayer/version.h>

unsigned int portinglayerVersion() {
    return PORTINGLAYER_VERSION;
}
