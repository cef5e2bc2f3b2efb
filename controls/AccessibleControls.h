#pragma once

// Screen readers learn what a widget is from its accessible interface. The controls this program
// draws by hand would otherwise show as plain, nameless panes: the striped progress bar reads as a
// progress bar with its value, the overlay scroller as a vertical scroll bar over its area's
// position, and each chip of a token field as a button named after its token, whose press action
// removes it.
namespace AccessibleControls {

// Installs the factory of those interfaces, once; every such control calls it when it is made.
void install();

} // namespace AccessibleControls
