drivelog_proof(conservation
  SOURCES Conservation.cpp Ledger.cpp LedgerStorage.cpp LockingClock.cpp SimulatedProduct.cpp
  USES drivelog_operatelog drivelog_collector)
