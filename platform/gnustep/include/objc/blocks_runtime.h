// GNUstep's headers ask for the GNU runtime's block header; Debian's
// libBlocksRuntime provides the same functions under <Block.h>.
#include <Block.h>
