#pragma once

#include <string>

#include "gui/x11/pointer_event.hpp"
#include "gui/x11/x11_display.hpp"

namespace vanta::gui {

/// The clipboard, for text. What we put there lasts as long as the interface, unless a clipboard manager
/// takes it over.
class X11Clipboard final : public X11EventTarget {
public:
    /// How long whoever has the clipboard may take to answer, and for each piece.
    static constexpr int kPatienceMs = 500;
    /// Bytes; more is not read.
    static constexpr std::size_t kGreatestText = 1 << 20;

    explicit X11Clipboard(X11Display& display);
    ~X11Clipboard() override;
    X11Clipboard(const X11Clipboard&) = delete;
    X11Clipboard& operator=(const X11Clipboard&) = delete;

    /// UTF-8.
    void setText(std::string text);
    /// Empty where there is no text, or nobody answers.
    std::string text();

    void handleEvent(XEvent& event) override;
    void handlePointer(const PointerEvent& /*event*/) override {}

private:
    bool ownsClipboard();
    struct Piece {
        Atom type = kNoXid;
        std::string bytes;
    };
    /// False if none comes in time.
    template <typename Condition>
    bool await(int type, XEvent& event, Condition condition);
    Piece takePiece(Atom property);
    std::string readAnswer(Atom property);
    std::string readPieces(Atom property);
    void answer(const XSelectionRequestEvent& request);

    X11Display& display_;
    Window window_;  ///< never shown
    std::string text_;
};

}  // namespace vanta::gui
