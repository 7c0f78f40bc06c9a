#include "platform/CascadeInput.h"
#include "platform/RemoteKeys.h"
#include "tests/screen/LoopFixture.h"

#include "host/base/HostHooks.h"

using Kind = screen::Event::Kind;

TEST_F(LoopTest, KeysGoToTheFocusAndThenToTheApplication)
{
    RecordingWindow main(app.log, "main");
    RecordingWindow menu(app.log, "menu");
    main.takesKeys = false;
    main.Materialize();
    menu.Materialize(CascadeWindow::kPlane1);
    EXPECT_TRUE(main.HasFocus());
    menu.TakeFocus();
    EXPECT_EQ((Log {"main focus", "main appears", "menu appears", "main blur", "menu focus"}), Taken());
    for (const uint32_t key : {Remote::kUp, Remote::kSelect}) {
        CascadeInput::DispatchKeyDown(key);
        CascadeInput::DispatchKeyUp(key);
    }
    Settle();
    EXPECT_EQ((Log {Hex("menu nav", Remote::kUp), Hex("menu up", Remote::kUp), Hex("menu down", Remote::kSelect), Hex("menu up", Remote::kSelect)}),
        Taken());

    menu.Vanish();
    EXPECT_EQ((Log {"main focus", "menu vanishes"}), Taken());
    CascadeInput::DispatchKeyDown(Remote::kDown);
    CascadeInput::DispatchKeyUp(Remote::kDown);
    Settle();
    EXPECT_EQ(
        (Log {Hex("main nav", Remote::kDown), Hex("app down", Remote::kDown), Hex("main up", Remote::kDown), Hex("app up", Remote::kDown)}), Taken());
}

TEST_F(LoopTest, ANavigationKeyHandsTheFocusToTheNextWindow)
{
    RecordingWindow left(app.log, "left");
    RecordingWindow right(app.log, "right");
    left.next = &right;
    left.Materialize();
    right.Materialize();
    Push(Kind::kKeyDown, Remote::kRight, "", 80);
    Push(Kind::kKeyDown, Remote::kRight, "", 80, true);    // held: goes on where the press led
    Push(Kind::kKeyUp, Remote::kRight, "", 80);
    Taken();
    Settle();
    EXPECT_EQ((Log {Hex("left nav", Remote::kRight), "left blur", "right focus", Hex("right nav", Remote::kRight), Hex("right up", Remote::kRight)}),
        Taken());
}

TEST_F(LoopTest, AHeldKeyThatClosesAWindowMeansNothingBelowIt)
{
    RecordingWindow main(app.log, "main");
    main.takesKeys = false;
    RecordingWindow menu(app.log, "menu");
    main.Materialize();
    menu.Materialize(CascadeWindow::kPlane1);
    menu.TakeFocus();
    menu.onKey = [&](unsigned long) { menu.Vanish(); };
    Taken();
    Push(Kind::kKeyDown, Remote::kExit, "", 42);
    Push(Kind::kKeyDown, Remote::kExit, "", 42, true);
    Push(Kind::kKeyUp, Remote::kExit, "", 42);
    Settle();
    EXPECT_EQ((Log {Hex("menu down", Remote::kExit), "menu blur", "main focus", "menu vanishes"}).size(),
        app.log.size() + 1);    // no blur for one that left
    for (const std::string& line : Taken()) {
        EXPECT_NE(0U, line.rfind("app", 0)) << line;
    }
    Push(Kind::kKeyDown, Remote::kExit, "", 42);
    Settle();
    EXPECT_EQ((Log {Hex("main down", Remote::kExit), Hex("app down", Remote::kExit)}), Taken());
}

TEST_F(LoopTest, APhoneHoldsAndTypesAsAKeyboardDoes)
{
    RecordingWindow main(app.log, "main");
    RecordingWindow menu(app.log, "menu");
    main.Materialize();
    menu.Materialize(CascadeWindow::kPlane1);
    menu.TakeFocus();
    menu.takesText = true;
    menu.onKey = [&](unsigned long) { menu.Vanish(); };
    Taken();
    host::Hooks().typeText("\xC3\xA9");
    CascadeInput::DispatchKeyDown(Remote::kSelect);
    host::Hooks().repeatKey(Remote::kSelect);    // held on: the window that got it has gone
    CascadeInput::DispatchKeyUp(Remote::kSelect);
    Settle();
    EXPECT_EQ((Log {"menu text \xC3\xA9", Hex("menu down", Remote::kSelect), "main focus", "menu vanishes"}), Taken());
    CascadeInput::DispatchKeyDown(Remote::kDown);
    host::Hooks().repeatKey(Remote::kDown);
    CascadeInput::DispatchKeyUp(Remote::kDown);
    Settle();
    EXPECT_EQ((Log {Hex("main nav", Remote::kDown), Hex("main nav", Remote::kDown), Hex("main up", Remote::kDown)}), Taken());
}

TEST_F(LoopTest, TypedCharactersComeFirstWhereTheyAreWanted)
{
    RecordingWindow main(app.log, "main");
    RecordingWindow keyboard(app.log, "keyboard");
    main.Materialize();
    keyboard.Materialize(CascadeWindow::kPlane2);
    // The main window has no use for text: a mapped key is its key, another one its character.
    Taken();
    Push(Kind::kKeyDown, Remote::kExit, "q", 20);
    Push(Kind::kKeyUp, Remote::kExit, "", 20);
    Push(Kind::kKeyDown, 0, "5", 30);
    Settle();
    EXPECT_EQ((Log {Hex("main down", Remote::kExit), Hex("main up", Remote::kExit), "main text 5"}), Taken());

    keyboard.TakeFocus();
    keyboard.takesText = true;
    Taken();
    Push(Kind::kKeyDown, Remote::kExit, "q", 20);
    Push(Kind::kKeyDown, Remote::kExit, "q", 20, true);
    Push(Kind::kKeyUp, Remote::kExit, "", 20);
    Push(Kind::kKeyDown, Remote::kExit, "\b", 42);
    Push(Kind::kKeyDown, Remote::kSelect, "", 40);
    Push(Kind::kText, 0, "é");
    Settle();
    EXPECT_EQ((Log {"keyboard text q", "keyboard text q", "keyboard text \b", Hex("keyboard down", Remote::kSelect), "keyboard text é"}), Taken());

    keyboard.takesText = false;    // not here: then it is the key after all
    Push(Kind::kKeyDown, Remote::kZoom, "z", 29);
    Settle();
    EXPECT_EQ((Log {"keyboard text z", Hex("keyboard down", Remote::kZoom)}), Taken());
}

TEST_F(LoopTest, TheFocusReturnsPastWindowsThatNeverHadIt)
{
    RecordingWindow main(app.log, "main");
    RecordingWindow list(app.log, "list");
    RecordingWindow picture(app.log, "picture");
    RecordingWindow dialog(app.log, "dialog");
    main.Materialize();
    list.Materialize(CascadeWindow::kPlane1);
    list.TakeFocus();
    dialog.Materialize(CascadeWindow::kPlane2);
    dialog.TakeFocus();
    picture.Materialize(CascadeWindow::kPlane1);    // below the dialog
    EXPECT_EQ((std::vector<std::string> {"main", "list", "picture", "dialog"}), host::Hooks().windowTitles());
    dialog.Vanish();
    EXPECT_TRUE(list.HasFocus());
    list.Vanish();
    EXPECT_TRUE(main.HasFocus());
    main.Vanish();
    EXPECT_TRUE(picture.HasFocus());
}

TEST_F(LoopTest, WindowsMayEndThemselvesAndOthersInTheirOwnCalls)
{
    auto* selfish = new RecordingWindow(app.log, "selfish");
    selfish->onVanish = [selfish] { delete selfish; };
    auto* painter = new RecordingWindow(app.log, "painter");
    auto* victim = new RecordingWindow(app.log, "victim");
    painter->onPaint = [&](CascadeBitmap&) {
        delete victim;
        victim = nullptr;
    };
    selfish->Materialize();
    painter->Materialize();
    victim->Materialize();
    selfish->onKey = [selfish](unsigned long) { selfish->Vanish(); };
    CascadeInput::DispatchKeyDown(Remote::kExit);
    CascadeInput::DispatchKeyUp(Remote::kExit);
    Settle();
    EXPECT_EQ(nullptr, victim);
    EXPECT_EQ((std::vector<std::string> {"painter"}), host::Hooks().windowTitles());
    EXPECT_TRUE(painter->HasFocus());
    delete painter;
    EXPECT_TRUE(host::Hooks().windowTitles().empty());
}

TEST_F(LoopTest, PaintingIsAskedForOnceATurnAndFromAnyThread)
{
    RecordingWindow window(app.log, "main");
    window.Materialize();
    window.Redraw();
    window.Redraw();
    Settle();
    EXPECT_EQ(1, window.paints);
    std::thread([&] { window.Redraw(); }).join();
    Settle();
    EXPECT_EQ(2, window.paints);
    window.SetRect({0, 0, 50, 50});
    window.SetRect({0, 0, 50, 50});
    Settle();
    EXPECT_EQ(3, window.paints);
    window.Vanish();
    window.Redraw();
    Settle();
    EXPECT_EQ(3, window.paints);
}
