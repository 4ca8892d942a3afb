"""Development stand-in for the Corvandell backend service.

The package answers the client's REST operations and the voice WebSocket on one
loopback port, keeping every piece of state in one sqlite file so a run can be
inspected, stopped and resumed.
"""
