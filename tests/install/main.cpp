// Every installed header, as another program includes them; reads the program's own file.

#include <base/Exception.h>
#include <base/FileUtils.h>
#include <base/InputBStream.h>
#include <base/InputBasicFile.h>
#include <base/InputMultiFile.h>
#include <base/InputServer.h>
#include <base/InputStreamStl.h>
#include <base/ObjAppendList.h>
#include <base/fnmatch.h>
#include <memory>

int main(int, char** argv) {
    const std::unique_ptr<vek::InputStream> stream(vek::InputServer::getInstance()->getFile(
        argv[0], vek::InputStream::BYTE_ORDER_NATIVE, "memory"));
    return stream != nullptr && stream->peek() == 0x7F ? 0 : 1;  // how an ELF file begins
}
