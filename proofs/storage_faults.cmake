drivelog_proof(storage_faults SOURCES storage_faults.cpp USES drivelog_logdb)
