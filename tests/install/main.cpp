// Every installed header, as another program includes them. Reads the program's own file, a
// document and a record.

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
#include <string>
#ifndef VEK_ALONE
#include <markup/Markup.h>
#include <record/RecordReader.h>
#include <record/Writer.h>

namespace {

struct Text : record::Sink {
    void write(std::string_view bytes) override { all += bytes; }
    std::string all;
};

bool worksWithDocumentsAndRecords() {
    MarkupDocument document;
    document.SetDoc("<TYPE/>");
    Text text;
    record::Writer(text).begin("TYPE");
    return document.FindElem() && document.GetTagName() == "TYPE" &&
           record::RecordReader::ofBytes(text.all).outcome().state == record::State::incomplete;
}

}  // namespace
#else
namespace {
bool worksWithDocumentsAndRecords() {
    return true;
}
}  // namespace
#endif

int main(int, char** argv) {
    const std::unique_ptr<vek::InputStream> stream(vek::InputServer::getInstance()->getFile(
        argv[0], vek::InputStream::BYTE_ORDER_NATIVE, "memory"));
    const bool isProgram = stream != nullptr && stream->peek() == 0x7F;  // how an ELF file begins
    return isProgram && worksWithDocumentsAndRecords() ? 0 : 1;
}
