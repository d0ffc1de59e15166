#include <faults/sweep.h>
#include <portinglayer/utf8.h>

TEST(FaultSweep, Utf8KeepsItsOutputsWithoutMemory) {
    std::wstring const text(50, L'\xE9');
    std::string const form = "more bytes than a string itself holds";
    std::string bytes;
    PString decoded, fitted;
    auto const convert = [&] {
        return firstFailure({PUtf8::encode(text.c_str(), bytes),
                             PUtf8::decode(form.data(), form.size(), decoded),
                             PUtf8::padded(text.c_str(), fitted)});
    };
    auto const clear = [&] {
        std::string("former").swap(bytes);  // the room goes, too
        decoded = L"former";
        fitted = L"former";
    };
    auto const look = [&](int code) {
        if (code == PERR_OK) return;
        EXPECT_TRUE(bytes == "former" || bytes.size() == 100) << bytes;
        EXPECT_TRUE(decoded == L"former" || decoded.len() == form.size());
        EXPECT_TRUE(fitted == L"former" || fitted.len() == 100);
    };
    sweep({.name = "PUtf8",
           .codes = {PERR_NO_MEMORY},
           .operation = convert,
           .before = clear,
           .after = look});
}
