// Route "desk": the one-time logon link that `kontavo desk` opens in the browser of the person at
// the desk. A valid link starts a desk session (administrator rights, no web account) on the
// business the desk opens at start-up, and goes to the main page; any other use of the route
// answers 403 with a page that says how to get a new link.
#pragma once

class LWebletForm;

void WLDeskLogon(LWebletForm& form);
